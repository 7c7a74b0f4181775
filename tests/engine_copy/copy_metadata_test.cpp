// Dates and attributes: folder dates agree after a walk, metadata-only copies with their
// case-only renames, the backup date of every copy, and locked items.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "copy_harness.h"

namespace marigold::test {
namespace {

constexpr std::int64_t kSecond = 1'000'000'000;
constexpr std::int64_t kOlder = 946'684'800;   // 2000-01-01
constexpr std::int64_t kNewer = 978'307'200;   // 2001-01-01

struct FolderDateCase {
  const char* name;
  bool sync;
  std::int64_t dateA, dateB;
  int childMode;                 // a file copied into the folder on one side during the walk
  std::int64_t wantA, wantB;     // -1: "anything but the other side's date"
};

class FolderDates : public ::testing::TestWithParam<FolderDateCase> {};

TEST_P(FolderDates, AgreeAfterTheWalk) {
  const FolderDateCase& c = GetParam();
  CopyHarness h({{"d/", kDir}, {"d/fromA", "1"}}, {{"d/", kDir}, {"d/fromB", "2"}});
  const std::string &a = h.a, &b = h.b;
  trees::SetModified(a + "/d", c.dateA, 500);
  trees::SetModified(b + "/d", c.dateB, 500);
  h.state.session.gIsSyncOn = c.sync;
  std::vector<ScanNode> nodes = {FolderNode(
      "d", kCopyModeNothing, {FileNode(c.childMode == kCopyModeCopyAToB ? "fromA" : "fromB", c.childMode)})};

  ASSERT_TRUE(h.Run(nodes));

  EXPECT_EQ(MTimeNs(a + "/d") / kSecond, c.wantA);
  if (c.wantB >= 0) {
    EXPECT_EQ(MTimeNs(a + "/d"), MTimeNs(b + "/d"));
  } else {
    EXPECT_GT(MTimeNs(b + "/d") / kSecond, kNewer);  // moved by the copy into it
  }
}

INSTANTIATE_TEST_SUITE_P(
    BothSidesHoldTheFolder, FolderDates,
    ::testing::Values(FolderDateCase{"SyncALater", true, kNewer, kOlder, kCopyModeCopyAToB, kNewer, kNewer},
                      FolderDateCase{"SyncBLaterWrittenInB", true, kOlder, kNewer, kCopyModeCopyAToB, kNewer, kNewer},
                      FolderDateCase{"SyncBLaterWrittenInA", true, kOlder, kNewer, kCopyModeCopyBToA, kNewer, kNewer},
                      FolderDateCase{"SyncEqualTakesA", true, kOlder, kOlder, kCopyModeCopyBToA, kOlder, kOlder},
                      FolderDateCase{"BackupALater", false, kNewer, kOlder, kCopyModeCopyAToB, kNewer, kNewer},
                      FolderDateCase{"BackupNeverDatesANewerDestinationBack", false, kOlder, kNewer,
                                     kCopyModeCopyAToB, kOlder, -1}),
    [](const auto& info) { return std::string(info.param.name); });

TEST(FolderDates, NewFolderGetsItsOriginsDateAndModeAfterItsItems) {
  CopyHarness h({}, {{"ro/", kDir}, {"ro/f", "f"}, {"ro/inner/", kDir}});
  const std::string &a = h.a, &b = h.b;
  ASSERT_EQ(::chmod((b + "/ro/inner").c_str(), 0500), 0);
  ASSERT_EQ(::chmod((b + "/ro").c_str(), 0555), 0);
  trees::SetModified(b + "/ro", kOlder, 123);
  std::vector<ScanNode> nodes = {FolderNode(
      "ro", kCopyModeCopyBToA, {FolderNode("inner", kCopyModeCopyBToA), FileNode("f", kCopyModeCopyBToA)})};

  ASSERT_TRUE(h.Run(nodes));

  EXPECT_EQ(trees::Read(a), trees::Read(b));
  EXPECT_EQ(ModeOf(a + "/ro"), 0555u);
  EXPECT_EQ(ModeOf(a + "/ro/inner"), 0500u);
  EXPECT_EQ(MTimeNs(a + "/ro"), kOlder * kSecond + 123);
  EXPECT_EQ(Counters(h.state.gA), "FoldersCreated=2 FilesCopied=1 ItemVisible=1");
}

TEST(Metadata, TargetTakesModeAndDatesAndTheBackupDate) {
  CopyHarness h({{"f", "same"}}, {{"f", "same"}});
  const std::string &a = h.a, &b = h.b;
  ASSERT_EQ(::chmod((a + "/f").c_str(), 0600), 0);
  trees::SetModified(a + "/f", kOlder, 42);
  std::vector<ScanNode> nodes = {FileNode("f", kCopyModeMetadataAToB)};

  ASSERT_TRUE(h.Run(nodes));

  EXPECT_EQ(ModeOf(b + "/f"), 0600u);
  EXPECT_EQ(MTimeNs(b + "/f"), kOlder * kSecond + 42);
  EXPECT_EQ(h.real.GetBackupDate(b + "/f"), kRunStart);
  EXPECT_EQ(h.real.GetBackupDate(a + "/f"), std::nullopt);
  EXPECT_EQ(Counters(h.state.gB), "");
  EXPECT_EQ(h.state.gTotError, 0);
}

struct RenameCase {
  const char* name;
  int mode;
  Tree wantA, wantB;
  std::string countersA, countersB;
};

class CaseOnlyRename : public ::testing::TestWithParam<RenameCase> {};

// A folder whose names differ in case only: its new name holds for the items walked after it.
TEST_P(CaseOnlyRename, TargetTakesTheOtherSpelling) {
  const RenameCase& c = GetParam();
  CopyHarness h({{"Docs/", kDir}, {"Docs/new in A", "1"}}, {{"docs/", kDir}, {"docs/new in B", "2"}});
  const std::string &a = h.a, &b = h.b;
  h.state.session.gIsSyncOn = true;
  std::vector<ScanNode> nodes = {WithDestName(
      FolderNode("Docs", c.mode,
                 {FileNode("new in A", kCopyModeCopyAToB), FileNode("new in B", kCopyModeCopyBToA)}),
      "docs")};

  ASSERT_TRUE(h.Run(nodes));

  EXPECT_EQ(trees::Read(a), c.wantA);
  EXPECT_EQ(trees::Read(b), c.wantB);
  EXPECT_EQ(Counters(h.state.gA), c.countersA);
  EXPECT_EQ(Counters(h.state.gB), c.countersB);
  EXPECT_TRUE(h.Errors().empty()) << h.Errors().front();
}

const Tree kUpper = {{"Docs/", kDir}, {"Docs/new in A", "1"}, {"Docs/new in B", "2"}};
const Tree kLower = {{"docs/", kDir}, {"docs/new in A", "1"}, {"docs/new in B", "2"}};

INSTANTIATE_TEST_SUITE_P(
    Metadata, CaseOnlyRename,
    ::testing::Values(RenameCase{"AToB", kCopyModeMetadataAToB, kUpper, kUpper, "FilesCopied=1 ItemVisible=1",
                                 "FilesCopied=1 FilesRenamed=1 ItemVisible=1"},
                      RenameCase{"BToA", kCopyModeMetadataBToA, kLower, kLower,
                                 "FilesCopied=1 FilesRenamed=1 ItemVisible=1", "FilesCopied=1 ItemVisible=1"}),
    [](const auto& info) { return std::string(info.param.name); });

TEST(BackupDate, EveryCopyButALinkCarriesTheRunsStart) {
  CopyHarness h({{"f", "new"}, {"r", "new"}, {"l", LinkTo("f")}, {"p.app/", kDir}, {"p.app/x", "x"}}, {{"r", "old"}});
  const std::string &a = h.a, &b = h.b;
  trees::SetModified(a + "/f", kOlder, 7);
  std::vector<ScanNode> nodes = {FileNode("f", kCopyModeCopyAToB), FileNode("l", kCopyModeCopyAToB),
                                 FileNode("p.app", kCopyModeCopyAToB), FileNode("r", kCopyModeReplaceAToB)};

  ASSERT_TRUE(h.Run(nodes));

  EXPECT_EQ(h.real.GetBackupDate(b + "/f"), kRunStart);
  EXPECT_EQ(h.real.GetBackupDate(b + "/r"), kRunStart);
  EXPECT_EQ(h.real.GetBackupDate(b + "/p.app"), kRunStart);
  EXPECT_EQ(h.real.GetBackupDate(b + "/l"), std::nullopt);
  EXPECT_EQ(MTimeNs(b + "/f"), kOlder * kSecond + 7);
  EXPECT_EQ(h.real.GetBackupDate(a + "/f"), std::nullopt);
}

// Locked items: the immutable flag, which only root can set.
class LockedItems : public ::testing::Test {
 protected:
  void SetUp() override {
    trees::Build(a, {{"f", "locked"}});
    trees::Build(b, {{"g", "locked too"}});
    if (!fs.SetLocked(a + "/f", true) || !fs.SetLocked(b + "/g", true)) GTEST_SKIP() << "no immutable flag here";
  }
  void TearDown() override {
    for (const std::string& path : {a + "/f", b + "/f", b + "/g", b + "/d"}) fs.SetLocked(path, false);
  }
  TempFolder tmp;
  const std::string a = tmp.Join("A"), b = tmp.Join("B");
  LinuxFileSystem fs;
};

TEST_F(LockedItems, CopyOfALockedFileIsLocked) {
  CopyHarness h(a, b);
  std::vector<ScanNode> nodes = {FileNode("f", kCopyModeCopyAToB)};

  ASSERT_TRUE(h.Run(nodes));

  EXPECT_EQ(ReadFile(b + "/f"), "locked");
  EXPECT_TRUE(fs.GetAttributes(b + "/f").Value().isLocked);
  EXPECT_EQ(fs.GetBackupDate(b + "/f"), kRunStart);
}

TEST_F(LockedItems, LockedFileIsDeletedOnlyWhenUnlockingIsOn) {
  for (bool unlock : {false, true}) {
    CopyHarness h(a, b);
    h.state.session.gIsUnlockOn = unlock;
    std::vector<ScanNode> nodes = {FileNode("g", kCopyModeDeleteInB)};

    EXPECT_EQ(h.Run(nodes), unlock);

    if (unlock) {
      EXPECT_EQ(trees::Read(b), Tree{});
      EXPECT_EQ(Counters(h.state.gB), "FilesDeleted=1");
    } else {
      EXPECT_EQ(h.Errors(), (std::vector<std::string>{"Can't delete the file \"{B}/g\"\rThe file is locked"}));
      EXPECT_EQ(trees::Read(b), (Tree{{"g", "locked too"}}));
    }
  }
}

TEST_F(LockedItems, LockedFolderIsNotDeletedWithoutItsChainUnlocked) {
  trees::Build(b, {{"d/", kDir}});
  ASSERT_TRUE(fs.SetLocked(b + "/d", true));
  CopyHarness h(a, b);
  std::vector<ScanNode> nodes = {FolderNode("d", kCopyModeDeleteInB)};

  EXPECT_FALSE(h.Run(nodes));

  EXPECT_EQ(h.Errors(), (std::vector<std::string>{"Insufficient Privileges \"{B}/d\""}));
  EXPECT_EQ(trees::Read(b), (Tree{{"d/", kDir}, {"g", "locked too"}}));
}

}  // namespace
}  // namespace marigold::test
