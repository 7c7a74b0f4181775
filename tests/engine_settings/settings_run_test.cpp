// Each task setting seen through a real run on real trees: what reaches the other side, what is
// left alone, and what goes to the trash. The dated sub-folder's name is tested where it is made.
#include <gtest/gtest.h>

#include <cstdlib>

#include "model/document_model.h"
#include "engine/scan_decisions.h"
#include "support/run_harness.h"
#include "support/platform_test_support.h"
#include "support/private_home.h"

namespace marigold::run_test {
namespace {

using trees::Tree;
constexpr std::int64_t T = 1'700'000'000;

[[maybe_unused]] ::testing::Environment* const kTrashHome =
    ::testing::AddGlobalTestEnvironment(new PrivateHomeEnvironment);

std::string Trash() { return std::string(std::getenv("XDG_DATA_HOME")) + "/Trash/files"; }

void Set(RunHarness& h, const char* key, PlistValue value) {
  GetSessionDict(h.document, 0)->GetDict("settingsDict")->Set(key, std::move(value));
}

// A session with one setting changed, run once from A to B.
struct SettingCase {
  const char* name;
  int task;  // 1 synchronise, 2 back up
  const char* key;
  std::int64_t value;
  Tree a, b;
  Tree wantA, wantB;
};

class SettingTakesEffect : public ::testing::TestWithParam<SettingCase> {};

TEST_P(SettingTakesEffect, OnARealRun) {
  const SettingCase& c = GetParam();
  RunHarness h;
  trees::Build(h.A(), c.a);
  trees::Build(h.B(), c.b);
  h.document = MakeDocument({{h.A(), h.B(), c.task}});
  Set(h, c.key, c.value);
  h.Run();
  EXPECT_EQ(h.Task(0, 0).GetInt("gTotError"), 0);
  EXPECT_EQ(trees::Read(h.A()), c.wantA);
  EXPECT_EQ(trees::Read(h.B()), c.wantB);
}

const Tree kWithInvisible = {{".hidden", "h"}, {".config/", ""}, {".config/x", "x"}, {"seen", "s"}};
const Tree kEmptyFolders = {{"empty/", ""}, {"onlyDS/", ""}, {"onlyDS/.DS_Store", "d"}, {"full/", ""},
                            {"full/f", "f"}};

INSTANTIATE_TEST_SUITE_P(
    Settings, SettingTakesEffect,
    ::testing::Values(
        SettingCase{"InvisibleItemsStayWhereTheyAre", 1, "settInvisibleItems", 0, kWithInvisible, {{".b", "b"}},
                    kWithInvisible, {{".b", "b"}, {"seen", "s"}}},
        SettingCase{"EmptyFoldersAreNotCreated", 2, "settSkipEmptyFolders", 1, kEmptyFolders, {}, kEmptyFolders,
                    {{"full/", ""}, {"full/f", "f"}}}),
    [](const auto& info) { return std::string(info.param.name); });

TEST(SettingPackagesFolders, PackagesAreWalkedButApplicationsStayWhole) {
  for (int asFolders : {0, 1}) {
    SCOPED_TRACE(asFolders);
    RunHarness h;
    trees::Build(h.A(), {{"Doc.bundle/", ""}, {"Doc.bundle/inner", "new"}, {"Tool.app/", ""}, {"Tool.app/bin", "new"}});
    trees::Build(h.B(), {{"Doc.bundle/", ""}, {"Doc.bundle/inner", "old"}, {"Doc.bundle/onlyB", "b"},
                         {"Tool.app/", ""}, {"Tool.app/bin", "old"}, {"Tool.app/onlyB", "b"}});
    for (const char* item : {"Doc.bundle/inner", "Tool.app/bin", "Doc.bundle", "Tool.app"}) {
      trees::SetModified(h.A(item), T + 100);
      trees::SetModified(h.B(item), T);
    }
    h.document = MakeDocument({{h.A(), h.B(), 2}});
    Set(h, "settPackagesFolders", asFolders);
    h.Run();
    EXPECT_EQ(h.Task(0, 0).GetInt("gTotError"), 0);
    // A package copied whole loses what only B held; a walked one keeps it (a plain backup).
    Tree want = {{"Doc.bundle/", ""}, {"Doc.bundle/inner", "new"}, {"Tool.app/", ""}, {"Tool.app/bin", "new"}};
    if (asFolders == 1) want["Doc.bundle/onlyB"] = "b";
    EXPECT_EQ(trees::Read(h.B()), want);
  }
}

TEST(SettingMoveToTrash, RemovedItemsGoToTheTrashAndAreCounted) {
  RunHarness h;
  trees::Build(h.A(), {{"keep", "k"}});
  trees::Build(h.B(), {{"keep", "k"}, {"gone.txt", "g"}, {"olddir/", ""}, {"olddir/inner.txt", "i"}});
  h.document = MakeDocument({{h.A(), h.B(), 2, true}});
  Set(h, "settMoveToTrash", 1);
  RunDriver& run = h.Run();
  EXPECT_EQ(h.Task(0, 0).GetInt("gTotError"), 0);
  EXPECT_EQ(trees::Read(h.B()), (Tree{{"keep", "k"}}));
  EXPECT_EQ(h.temp.ReadFile(Trash() + "/gone.txt"), "g");
  EXPECT_EQ(h.temp.ReadFile(Trash() + "/olddir/inner.txt"), "i");
  EXPECT_EQ(run.copyTotals().FilesTrashed, 2);
  EXPECT_EQ(run.copyTotals().FoldersTrashed, 1);
  EXPECT_EQ(run.copyTotals().FilesDeleted + run.copyTotals().FoldersDeleted, 0);
  const std::string log = h.Task(0, 0).GetString("gDetailedLogText");
  EXPECT_NE(log.find("Trashed file \"" + h.B("gone.txt") + "\""), std::string::npos) << log;
  EXPECT_NE(log.find("Trashed folder \"" + h.B("olddir") + "\""), std::string::npos) << log;
  EXPECT_NE(log.find("Trashed file \"" + h.B("olddir/inner.txt") + "\""), std::string::npos) << log;
}

TEST(SettingMoveToTrash, VolumeWithoutATrashKeepsTheItems) {
  std::string whyNot;
  auto volume = test::TestVolume::Make("tmpfs", 2, &whyNot);
  if (!volume) GTEST_SKIP() << whyNot;
  RunHarness h;
  const std::string b = volume->Path() + "/B";
  trees::Build(b, {{"gone.txt", "g"}, {"olddir/", ""}, {"olddir/inner.txt", "i"}});
  trees::Build(h.A(), {{"keep", "k"}});  // an empty source would look unmounted
  h.document = MakeDocument({{h.A(), b, 2, true}});
  h.preferences.Set("prefOnError", 2);  // go on after each error without asking
  Set(h, "settMoveToTrash", 1);
  RunDriver& run = h.Run();
  EXPECT_EQ(trees::Read(b), (Tree{{"gone.txt", "g"}, {"keep", "k"}, {"olddir/", ""}, {"olddir/inner.txt", "i"}}));
  EXPECT_EQ(h.Task(0, 0).GetInt("gTotError"), 3);
  const std::string log = h.Task(0, 0).GetString("gDetailedLogText");
  EXPECT_NE(log.find("Can't trash the file \"" + b + "/gone.txt\""), std::string::npos) << log;
  EXPECT_NE(log.find("Can't trash the folder (and its content) \"" + b + "/olddir\""), std::string::npos) << log;
  EXPECT_EQ(run.copyTotals().FilesTrashed + run.copyTotals().FoldersTrashed, 0);
}

// Attribute checking on items alike in content: what a metadata copy can set is compared, and
// once it has been copied the next run finds nothing to do.
struct AttrCase {
  const char* name;
  int task;  // 1 synchronise, 2 back up
  const char* command;  // run on A's and B's "f" by the shell; %A and %B stand for their paths
  int want;             // 8, 9 or 0 (nothing to do)
};

class SettingCheckAttrChanged : public ::testing::TestWithParam<AttrCase> {};

TEST_P(SettingCheckAttrChanged, ComparesWhatACopyCanSet) {
  const AttrCase& c = GetParam();
  RunHarness h;
  trees::Build(h.A(), {{"f", "x"}});
  trees::Build(h.B(), {{"f", "x"}});
  trees::SetModified(h.A("f"), T);
  trees::SetModified(h.B("f"), T);
  std::string command = c.command;
  for (std::size_t at; (at = command.find("%A")) != std::string::npos;) command.replace(at, 2, "'" + h.A("f") + "'");
  for (std::size_t at; (at = command.find("%B")) != std::string::npos;) command.replace(at, 2, "'" + h.B("f") + "'");
  if (!command.empty()) {
    ASSERT_EQ(std::system(command.c_str()), 0) << command;
  }
  h.document = MakeDocument({{h.A(), h.B(), c.task}});
  Set(h, "settCheckAttrChanged", 1);

  const RunTallies& first = h.Run(0, kExecutedByCommandLine).state().tallies;
  EXPECT_EQ(first.runMetadataAToB, c.want == 8 ? 1 : 0);
  EXPECT_EQ(first.runMetadataBToA, c.want == 9 ? 1 : 0);
  const RunTallies& second = h.Run(0, kExecutedByCommandLine).state().tallies;
  EXPECT_EQ(second.runMetadataAToB + second.runMetadataBToA, 0);
}

INSTANTIATE_TEST_SUITE_P(
    Items, SettingCheckAttrChanged,
    ::testing::Values(AttrCase{"Equal", 2, "", 0},
                      AttrCase{"StatusTimeAlone", 1, "touch -a %B", 0},
                      AttrCase{"ModeInBackup", 2, "chmod 600 %A", 8},
                      AttrCase{"ModeChangedLastOnB", 2, "chmod 600 %B", 8},
                      AttrCase{"UserAttribute", 2, "setfattr -n user.tag -v red %A", 8},
                      AttrCase{"AccessList", 2, "setfacl -m u:nobody:r %A", 8},
                      AttrCase{"SyncBChangedLast", 1, "chmod 600 %A && sleep 0.01 && setfattr -n user.tag -v b %B", 9},
                      AttrCase{"SyncAChangedLast", 1, "chmod 600 %B && sleep 0.01 && chmod 640 %A", 8}),
    [](const auto& info) { return std::string(info.param.name); });

}  // namespace
}  // namespace marigold::run_test
