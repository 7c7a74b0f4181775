// "marigold sync" and "marigold run" as a user types them: the four task kinds end to end, the
// exit statuses, a dry run that changes nothing, settings for one run only, the preview asked
// on the terminal, and the exact runs' index guarding a side that lost what it held.
#include <gtest/gtest.h>

#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <cstring>
#include <filesystem>
#include <map>

#include "model/document_model.h"
#include "platform/linux_file_system.h"
#include "support/cli_runner.h"
#include "support/tree_values.h"
#include "platform/plist_files.h"

namespace marigold::cli_testing {
namespace {

using trees::Tree;

constexpr std::int64_t kOld = 1500000000;
constexpr std::int64_t kNew = 1600000000;

struct KindCase {
  const char* name;
  std::vector<std::string> flags;
  Tree wantA;
  Tree wantB;
};

class TaskKinds : public ::testing::TestWithParam<KindCase> {};

TEST_P(TaskKinds, EndToEnd) {
  const KindCase& c = GetParam();
  CliHome box;
  const std::string a = box.Path("A");
  const std::string b = box.Path("B");
  trees::Build(a, {{"only-a.txt", "from A"}, {"both.txt", "A is newer"}, {"docs/", ""}, {"docs/d.txt", "doc"}});
  trees::Build(b, {{"only-b.txt", "from B"}, {"both.txt", "B is older"}});
  trees::SetModified(a + "/both.txt", kNew);
  trees::SetModified(b + "/both.txt", kOld);
  std::vector<std::string> args{"sync", a, b};
  args.insert(args.end(), c.flags.begin(), c.flags.end());

  const CliResult result = box.Run(args);

  EXPECT_EQ(result.status, 0) << result.err;
  EXPECT_EQ(trees::Read(a), c.wantA);
  EXPECT_EQ(trees::Read(b), c.wantB);
  EXPECT_NE(result.out.find("Items replaced: 1"), std::string::npos) << result.out;
  EXPECT_NE(result.out.find("Errors: 0"), std::string::npos) << result.out;
}

const Tree kBothSides{{"only-a.txt", "from A"},
                      {"only-b.txt", "from B"},
                      {"both.txt", "A is newer"},
                      {"docs/", ""},
                      {"docs/d.txt", "doc"}};
const Tree kSideA{{"only-a.txt", "from A"}, {"both.txt", "A is newer"}, {"docs/", ""}, {"docs/d.txt", "doc"}};

INSTANTIATE_TEST_SUITE_P(
    RunCommands, TaskKinds,
    ::testing::Values(KindCase{"SyncBothWays", {}, kBothSides, kBothSides},
                      KindCase{"ExactSyncFirstRunCopiesBothWays", {"--exact"}, kBothSides, kBothSides},
                      KindCase{"BackupOneWay", {"--backup"}, kSideA, kBothSides},
                      KindCase{"ExactBackupDeletesWhatOnlyBHas", {"--backup", "--exact"}, kSideA, kSideA}),
    [](const auto& info) { return std::string(info.param.name); });

struct UsageCase {
  const char* name;
  std::vector<std::string> args;  // "{A}" and "{B}" stand for two existing folders, "{doc}" for a file
  const char* wantErr;
};

class CannotStart : public ::testing::TestWithParam<UsageCase> {};

TEST_P(CannotStart, ExitsWithTwo) {
  const UsageCase& c = GetParam();
  CliHome box;
  trees::Build(box.Path("A"), {{"a.txt", "a"}});
  trees::Build(box.Path("B"), {});
  trees::Write(box.Path("garbage.mgy"), "this is not a property list");
  std::vector<std::string> args;
  for (const std::string& arg : c.args) {
    if (arg == "{A}") args.push_back(box.Path("A"));
    else if (arg == "{B}") args.push_back(box.Path("B"));
    else if (arg == "{garbage}") args.push_back(box.Path("garbage.mgy"));
    else if (arg == "{missing}") args.push_back(box.Path("missing"));
    else args.push_back(arg);
  }

  const CliResult result = box.Run(args);

  EXPECT_EQ(result.status, 2);
  EXPECT_NE(result.err.find(c.wantErr), std::string::npos) << result.err;
  EXPECT_EQ(trees::Read(box.Path("B")), Tree{});
}

INSTANTIATE_TEST_SUITE_P(
    RunCommands, CannotStart,
    ::testing::Values(UsageCase{"MissingDestination", {"sync", "{A}"}, "DEST"},
                      UsageCase{"NeitherFolderExists", {"sync", "{missing}", "{missing}2"}, "neither"},
                      UsageCase{"UnknownSetting", {"sync", "{A}", "{B}", "--set", "settNoSuchThing=1"}, "settNoSuchThing"},
                      UsageCase{"BadlyTypedSetting", {"sync", "{A}", "{B}", "--set", "settExact=yes"}, "integer"},
                      UsageCase{"MissingDocument", {"run", "{missing}"}, "cannot read"},
                      UsageCase{"NotADocument", {"run", "{garbage}"}, "cannot read"},
                      UsageCase{"SessionAndAll", {"run", "{garbage}", "--index", "0", "--all"}, "--all"}),
    [](const auto& info) { return std::string(info.param.name); });

TEST(RunCommands, ErrorsCountedByTheRunExitWithOne) {
  CliHome box;
  trees::Build(box.Path("A"), {{"a.txt", "a"}, {"b.txt", "b"}});
  trees::Build(box.Path("B"), {});
  LinuxFileSystem fs;
  // Even root cannot create items in an immutable folder.
  if (!fs.SetLocked(box.Path("B"), true)) GTEST_SKIP() << "this file system keeps no immutable flag";

  // Locked items are left alone, so the locked folder refuses both copies.
  const CliResult result = box.Run({"sync", "--backup", "--set", "settLockedItems=0", box.Path("A"), box.Path("B")});
  fs.SetLocked(box.Path("B"), false);

  EXPECT_EQ(result.status, 1) << result.out << result.err;
  // Each file is refused twice: by the privilege check of the scan, which keeps the item, and by
  // the copy itself.
  EXPECT_NE(result.out.find("Errors: 4"), std::string::npos) << result.out;
  EXPECT_NE(result.err.find("a.txt"), std::string::npos) << result.err;
}

// Every item below `root` (the captured output files of the runner aside): its kind, content,
// modification time and extended attributes.
std::map<std::string, std::string> Snapshot(const std::string& root) {
  std::map<std::string, std::string> items;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(root)) {
    const std::string path = entry.path().string();
    const std::string relative = path.substr(root.size());
    if (relative == "/.in" || relative == "/.out" || relative == "/.err") continue;
    struct stat st {};
    ::lstat(path.c_str(), &st);
    std::string text = std::to_string(st.st_mode) + " " + std::to_string(st.st_mtim.tv_sec) + "." +
                       std::to_string(st.st_mtim.tv_nsec);
    if (S_ISREG(st.st_mode)) text += " " + ReadFileText(path);
    std::string names(4096, '\0');
    const ssize_t n = ::llistxattr(path.c_str(), names.data(), names.size());
    for (ssize_t i = 0; i < n; i += static_cast<ssize_t>(std::strlen(names.data() + i)) + 1) {
      std::string value(4096, '\0');
      const ssize_t length = ::lgetxattr(path.c_str(), names.data() + i, value.data(), value.size());
      text += std::string(" ") + (names.data() + i) + "=" + value.substr(0, length > 0 ? length : 0);
    }
    items[relative] = text;
  }
  return items;
}

// Between two exact runs a dry run only looks: the folders, the home folder (the preferences, the
// template and the exact-sync index) and every date and attribute stay as they were.
TEST(RunCommands, DryRunPrintsTheDecisionsAndChangesNothing) {
  CliHome box;
  const std::string a = box.Path("A");
  const std::string b = box.Path("B");
  trees::Build(a, {{"gone.txt", "g"}, {"both.txt", "same"}});
  trees::Build(b, {});
  const std::vector<std::string> exact{"sync", "--exact", a, b};
  ASSERT_EQ(box.Run(exact).status, 0);
  trees::Build(a, {{"new.txt", "n"}, {"sub/", ""}, {"sub/deep.txt", "d"}, {"both.txt", "newer"}});
  trees::Build(b, {{"both.txt", "older"}, {"b-only.txt", "b"}});
  trees::SetModified(a + "/both.txt", kNew);
  trees::SetModified(b + "/both.txt", kOld);
  // A temporary that a killed run left behind is the next real run's to remove, not a dry run's.
  trees::Write(a + "/.MGTempFile-0123456789abcdef", "half");
  const auto before = Snapshot(box.root());

  const CliResult result = box.Run({"sync", a, b, "--dry-run"});

  EXPECT_EQ(result.status, 0) << result.err;
  EXPECT_EQ(Snapshot(box.root()), before);
  for (const char* line : {"  b-only.txt  copy B to A\n", "  both.txt  replace B with A\n", "  new.txt  copy A to B\n",
                           "  sub/  copy A to B\n", "    deep.txt  copy A to B\n"}) {
    EXPECT_NE(result.out.find(line), std::string::npos) << line << " in\n" << result.out;
  }

  // The index of the exact runs is still in force: a deletion on A crosses over.
  ASSERT_EQ(::unlink((a + "/gone.txt").c_str()), 0);
  ASSERT_EQ(box.Run(exact).status, 0);
  EXPECT_EQ(trees::Read(b).count("gone.txt"), 0u);
  EXPECT_EQ(trees::Read(a), trees::Read(b));
}

TEST(RunCommands, APreferenceSetForOneRunLeavesThePreferencesFileAlone) {
  CliHome box;
  const std::string a = box.Path("A");
  const std::string b = box.Path("B");
  trees::Build(a, {{"f.txt", "changed a minute later"}});
  trees::Build(b, {{"f.txt", "original"}});
  trees::SetModified(a + "/f.txt", kOld + 60);
  trees::SetModified(b + "/f.txt", kOld);
  ASSERT_EQ(box.Run({"prefs", "show"}).status, 0);  // writes the preferences file
  const std::string before = ReadFileText(box.PreferencesFile());
  ASSERT_FALSE(before.empty());

  // Two minutes of tolerance make the two files equal for this run.
  const CliResult result =
      box.Run({"sync", a, b, "--set", "prefModificationDelta=1", "--set", "prefModificationDeltaField=120"});

  EXPECT_EQ(result.status, 0) << result.err;
  EXPECT_EQ(trees::Read(b), (Tree{{"f.txt", "original"}}));
  EXPECT_EQ(ReadFileText(box.PreferencesFile()), before);

  const CliResult without = box.Run({"sync", a, b});
  EXPECT_EQ(without.status, 0) << without.err;
  EXPECT_EQ(trees::Read(b), (Tree{{"f.txt", "changed a minute later"}}));
}

class RunDocument : public ::testing::Test {
 protected:
  void SetUp() override {
    for (const char* side : {"A0", "B0", "A1", "B1"}) trees::Build(box.Path(side), {});
    trees::Write(box.Path("A0/zero.txt"), "0");
    trees::Write(box.Path("A1/one.txt"), "1");
    PlistDict root = NewTemplate();
    for (std::int64_t i = 0; i < 2; ++i) {
      PlistDict* console = GetSessionDict(root, i)->GetDict("consoleDict");
      console->Set("topFolder", box.Path("A" + std::to_string(i)));
      console->Set("bottomFolder", box.Path("B" + std::to_string(i)));
    }
    root.Set("sessionIndex", 1);
    ASSERT_TRUE(WriteXmlPlistFile(SystemFileSystem(), document, PlistValue(root)));
  }

  bool Copied(int session) const { return !trees::Read(box.Path("B" + std::to_string(session))).empty(); }

  CliHome box;
  const std::string document = box.Path("sessions.mgy");
};

TEST_F(RunDocument, RunsTheCurrentSessionOrTheOneAskedFor) {
  EXPECT_EQ(box.Run({"run", document, "--session", "No Such Session"}).status, 2);
  EXPECT_EQ(box.Run({"run", document, "--index", "2"}).status, 2);
  EXPECT_EQ(box.Run({"run", document}).status, 0);
  EXPECT_FALSE(Copied(0));
  EXPECT_TRUE(Copied(1));
  EXPECT_EQ(box.Run({"run", document, "--session", "Default Sync Session"}).status, 0);
  EXPECT_TRUE(Copied(0));
}

TEST_F(RunDocument, AllSessionsRunEverySessionAndADryRunNone) {
  const CliResult dry = box.Run({"run", document, "--all", "--dry-run"});
  EXPECT_EQ(dry.status, 0) << dry.err;
  EXPECT_NE(dry.out.find("zero.txt  copy A to B"), std::string::npos) << dry.out;
  EXPECT_NE(dry.out.find("one.txt  copy A to B"), std::string::npos) << dry.out;
  EXPECT_FALSE(Copied(0));
  EXPECT_FALSE(Copied(1));

  EXPECT_EQ(box.Run({"run", document, "--all"}).status, 0);
  EXPECT_TRUE(Copied(0));
  EXPECT_TRUE(Copied(1));
}

struct PreviewAnswer {
  const char* name;
  const char* input;
  bool copied;
};

class InteractivePreview : public ::testing::TestWithParam<PreviewAnswer> {};

TEST_P(InteractivePreview, AsksOnTheTerminalBeforeCopying) {
  const PreviewAnswer& c = GetParam();
  CliHome box;
  trees::Build(box.Path("A"), {{"a.txt", "a"}});
  trees::Build(box.Path("B"), {});

  const CliResult result = box.Run(
      {"sync", box.Path("A"), box.Path("B"), "--interactive", "--set", "prefPreview=1", "--set", "prefAskConfirmation=0"},
      c.input);

  EXPECT_EQ(result.status, 0) << result.err;
  EXPECT_NE(result.err.find("1  copy A to B"), std::string::npos) << result.err;
  EXPECT_EQ(trees::Read(box.Path("B")).size(), c.copied ? 1u : 0u);
}

INSTANTIATE_TEST_SUITE_P(RunCommands, InteractivePreview,
                         ::testing::Values(PreviewAnswer{"DefaultIsYes", "\n", true}, PreviewAnswer{"Stop", "stop\n", false},
                                           PreviewAnswer{"NoAnswerAtAll", "", false}),
                         [](const auto& info) { return std::string(info.param.name); });

// A deletion switched off in the preview is not carried out, the rest is, and the next exact run
// proposes that deletion again instead of taking the kept file for a new one.
TEST(RunCommands, ASwitchedOffDeletionIsKeptAndProposedAgainByTheNextExactRun) {
  CliHome box;
  const std::string a = box.Path("A");
  const std::string b = box.Path("B");
  trees::Build(a, {{"keep.txt", "k"}, {"x.txt", "x"}, {"y.txt", "y"}});
  const std::vector<std::string> sync{"sync", "--exact", a, b};
  ASSERT_EQ(box.Run(sync).status, 0);
  ASSERT_EQ(::unlink((a + "/x.txt").c_str()), 0);
  ASSERT_EQ(::unlink((a + "/y.txt").c_str()), 0);

  // The rows: 1 x.txt, 2 y.txt (keep.txt has nothing to do). A typo first, then x's deletion off.
  std::vector<std::string> previewed = sync;
  previewed.insert(previewed.end(), {"--interactive", "--set", "prefPreview=1", "--set", "prefAskConfirmation=0"});
  const CliResult shown = box.Run(previewed, "of 1\noff 1\ngo\n");
  ASSERT_EQ(shown.status, 0) << shown.err;
  EXPECT_NE(shown.err.find("Preview - Exact Sync"), std::string::npos) << shown.err;
  EXPECT_NE(shown.err.find("Type \"off N\""), std::string::npos) << shown.err;
  EXPECT_NE(shown.err.find("1  off (delete in B)"), std::string::npos) << shown.err;
  EXPECT_NE(shown.err.find("existing 1, skipped 1, delete 1"), std::string::npos) << shown.err;
  EXPECT_EQ(trees::Read(a), (Tree{{"keep.txt", "k"}}));
  EXPECT_EQ(trees::Read(b), (Tree{{"keep.txt", "k"}, {"x.txt", "x"}}));

  // Without the preview's record of x the next run would copy x back to A.
  ASSERT_EQ(box.Run(sync).status, 0);
  EXPECT_EQ(trees::Read(a), (Tree{{"keep.txt", "k"}}));
  EXPECT_EQ(trees::Read(b), (Tree{{"keep.txt", "k"}}));
}

// A side whose folder was swapped for one holding only a stray hidden file (a mount point without
// its volume) keeps none of what the index recorded: the task is skipped, nothing is deleted.
TEST(RunCommands, ASideThatLostEveryIndexedItemDeletesNothing) {
  CliHome box;
  const std::string a = box.Path("A");
  const std::string b = box.Path("B");
  const trees::Tree all{{"a.txt", "a"}, {"docs/", ""}, {"docs/d.txt", "d"}};
  trees::Build(a, all);
  const std::vector<std::string> sync{"sync", "--exact", a, b};
  ASSERT_EQ(box.Run(sync).status, 0);
  std::filesystem::remove_all(b);
  trees::Build(b, {{".hidden", "h"}});

  CliResult run = box.Run(sync);
  EXPECT_EQ(run.status, 1) << run.out << run.err;
  EXPECT_NE(run.out.find("Errors: 1"), std::string::npos) << run.out;
  EXPECT_EQ(trees::Read(a), all);
}

// A package is deleted whole; a locked item inside it is opened first when the session handles
// locked items, and keeps the package otherwise.
class LockedPackage : public ::testing::TestWithParam<bool> {};

TEST_P(LockedPackage, IsDeletedOnlyWhenLockedItemsAreHandled) {
  if (::geteuid() != 0) GTEST_SKIP() << "only root can lock items";
  const bool handled = GetParam();
  CliHome box;
  const std::string a = box.Path("A");
  const std::string b = box.Path("B");
  trees::Build(a, {{"keep.txt", "k"}});
  trees::Build(b, {{"keep.txt", "k"}, {"Old.app/", ""}, {"Old.app/Contents/", ""}, {"Old.app/Contents/bin", "x"}});
  LinuxFileSystem fs;
  if (!fs.SetLocked(b + "/Old.app/Contents/bin", true)) GTEST_SKIP() << "this file system keeps no immutable flag";

  const CliResult result = box.Run({"sync", "--backup", "--exact", "--set",
                                    std::string("settLockedItems=") + (handled ? "1" : "0"), a, b});
  fs.SetLocked(b + "/Old.app/Contents/bin", false);

  if (handled) {
    EXPECT_EQ(result.status, 0) << result.out << result.err;
    EXPECT_EQ(trees::Read(b), (Tree{{"keep.txt", "k"}}));
  } else {
    EXPECT_EQ(result.status, 1) << result.out << result.err;
    EXPECT_EQ(trees::Read(b).count("Old.app/Contents/bin"), 1u);
  }
}

INSTANTIATE_TEST_SUITE_P(ExactBackup, LockedPackage, ::testing::Bool());

}  // namespace
}  // namespace marigold::cli_testing
