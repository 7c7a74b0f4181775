// "marigold sync" and "marigold run" as a user types them: the four task kinds end to end, the
// exit statuses, a dry run that changes nothing, settings for one run only, and the preview asked
// on the terminal.
#include <gtest/gtest.h>

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

TEST(RunCommands, DryRunPrintsTheDecisionsAndChangesNothing) {
  CliHome box;
  const std::string a = box.Path("A");
  const std::string b = box.Path("B");
  trees::Build(a, {{"new.txt", "n"}, {"sub/", ""}, {"sub/deep.txt", "d"}, {"both.txt", "newer"}});
  trees::Build(b, {{"both.txt", "older"}, {"b-only.txt", "b"}});
  trees::SetModified(a + "/both.txt", kNew);
  trees::SetModified(b + "/both.txt", kOld);
  const Tree treeA = trees::Read(a);
  const Tree treeB = trees::Read(b);
  const auto datesA = trees::Dates(a);
  const auto datesB = trees::Dates(b);

  const CliResult result = box.Run({"sync", a, b, "--dry-run"});

  EXPECT_EQ(result.status, 0) << result.err;
  EXPECT_EQ(trees::Read(a), treeA);
  EXPECT_EQ(trees::Read(b), treeB);
  EXPECT_EQ(trees::Dates(a), datesA);
  EXPECT_EQ(trees::Dates(b), datesB);
  for (const char* line : {"  b-only.txt  copy B to A\n", "  both.txt  replace B with A\n", "  new.txt  copy A to B\n",
                           "  sub/  copy A to B\n", "    deep.txt  copy A to B\n"}) {
    EXPECT_NE(result.out.find(line), std::string::npos) << line << " in\n" << result.out;
  }
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

}  // namespace
}  // namespace marigold::cli_testing
