// Failures of single items: the message, the "√ " log line, the error count, and above all what
// is left on disk. An item changed or added since the scan is never overwritten or deleted.
#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <optional>

#include "copy_harness.h"

namespace marigold::test {
namespace {

struct ErrorCase {
  const char* name;
  Tree a, b;
  std::vector<ScanNode> nodes;
  std::function<void(const CopyHarness&)> afterScan;  // changes the disk between scan and copy
  std::vector<std::string> errors;                    // with "{A}" and "{B}" for the roots
  std::optional<Tree> wantA, wantB;  // nothing: as the run found it
  std::vector<std::string> deletedEarlier;  // paths in gItemsDeleted before the walk
  std::string linesBefore;                   // success lines the log holds before the errors
  bool trash = false;
};

class ExecutorFails : public ::testing::TestWithParam<ErrorCase> {};

TEST_P(ExecutorFails, ReportsAndKeepsTheDisk) {
  const ErrorCase& c = GetParam();
  CopyHarness h(c.a, c.b);
  h.state.session.gIsMoveToTrash = c.trash;
  for (const std::string& path : c.deletedEarlier) h.state.gItemsDeleted.insert(h.Path(path));
  std::vector<ScanNode> nodes = c.nodes;
  TakeSnapshots(nodes, h.a, h.b);
  if (c.afterScan) c.afterScan(h);
  const Tree foundA = trees::Read(h.a), foundB = trees::Read(h.b);

  const bool result = h.Run(nodes, false);

  EXPECT_EQ(h.Errors(), c.errors);
  EXPECT_EQ(result, c.errors.empty());
  EXPECT_EQ(h.state.gTotError, static_cast<std::int64_t>(c.errors.size()));
  std::string wantLog = c.linesBefore;
  for (const std::string& error : c.errors) wantLog += "\xE2\x88\x9A " + error + "\r";
  EXPECT_EQ(h.Log(), wantLog);
  EXPECT_EQ(trees::Read(h.a), c.wantA.value_or(foundA));
  EXPECT_EQ(trees::Read(h.b), c.wantB.value_or(foundB));
}

void Write(const CopyHarness& h, const std::string& path, const std::string& content) {
  trees::Write(h.Path(path), content);
}
void Remove(const CopyHarness& h, const std::string& path) { std::filesystem::remove_all(h.Path(path)); }

INSTANTIATE_TEST_SUITE_P(
    Vanished, ExecutorFails,
    ::testing::Values(
        ErrorCase{.name = "SourceIsAnError",
                  .a = {{"f", "x"}},
                  .nodes = {FileNode("f", kCopyModeCopyAToB)},
                  .afterScan = [](const CopyHarness& h) { Remove(h, "{A}/f"); },
                  .errors = {"Can't find the source item \"{A}/f\""}},
        ErrorCase{.name = "SourceInsideAFolderDeletedEarlierIsNot",
                  .a = {{"d/", kDir}, {"d/f", "x"}},
                  .b = {{"d/", kDir}},
                  .nodes = {FolderNode("d", kCopyModeNothing, {FileNode("f", kCopyModeCopyAToB)})},
                  .afterScan = [](const CopyHarness& h) { Remove(h, "{A}/d"); },
                  .deletedEarlier = {"{A}/d"}},
        ErrorCase{.name = "DestinationParentIsAnError",
                  .a = {{"d/", kDir}, {"d/f", "x"}},
                  .b = {{"d/", kDir}},
                  .nodes = {FolderNode("d", kCopyModeNothing, {FileNode("f", kCopyModeCopyAToB)})},
                  .afterScan = [](const CopyHarness& h) { Remove(h, "{B}/d"); },
                  .errors = {"Can't copy the file \"{A}/d/f\"\rto: \"{B}/d/f\"\r"
                             "Can't find the parent destination folder."}},
        ErrorCase{.name = "DestinationParentDeletedEarlierIsNot",
                  .a = {{"d/", kDir}, {"d/f", "x"}},
                  .b = {{"d/", kDir}},
                  .nodes = {FolderNode("d", kCopyModeNothing, {FileNode("f", kCopyModeCopyAToB)})},
                  .afterScan = [](const CopyHarness& h) { Remove(h, "{B}/d"); },
                  .deletedEarlier = {"{B}/d"}},
        ErrorCase{.name = "ParentOfANewFolderIsAnError",
                  .a = {{"d/", kDir}, {"d/e/", kDir}},
                  .b = {{"d/", kDir}},
                  .nodes = {FolderNode("d", kCopyModeNothing, {FolderNode("e", kCopyModeCopyAToB)})},
                  .afterScan = [](const CopyHarness& h) { Remove(h, "{B}/d"); },
                  .errors = {"Can't create the folder \"{B}/d/e\"\rCan't find the parent destination folder."}},
        ErrorCase{.name = "ParentOfANewFolderDeletedEarlierIsNot",
                  .a = {{"d/", kDir}, {"d/e/", kDir}},
                  .b = {{"d/", kDir}},
                  .nodes = {FolderNode("d", kCopyModeNothing, {FolderNode("e", kCopyModeCopyAToB)})},
                  .afterScan = [](const CopyHarness& h) { Remove(h, "{B}/d"); },
                  .deletedEarlier = {"{B}/d"}}),
    [](const auto& info) { return std::string(info.param.name); });

INSTANTIATE_TEST_SUITE_P(
    ChangedSinceTheScan, ExecutorFails,
    ::testing::Values(
        ErrorCase{.name = "ReplacedFileKeepsTheUsersChange",
                  .a = {{"f", "new"}},
                  .b = {{"f", "old"}},
                  .nodes = {FileNode("f", kCopyModeReplaceAToB)},
                  .afterScan = [](const CopyHarness& h) { Write(h, "{B}/f", "edited by the user"); },
                  .errors = {"The item changed during the run and was skipped: \"{B}/f\""}},
        ErrorCase{.name = "DeletedFileIsKept",
                  .b = {{"f", "old"}},
                  .nodes = {FileNode("f", kCopyModeDeleteInB)},
                  .afterScan = [](const CopyHarness& h) { Write(h, "{B}/f", "edited"); },
                  .errors = {"The item changed during the run and was skipped: \"{B}/f\""}},
        ErrorCase{.name = "FileThatAppearedIsNotOverwritten",
                  .a = {{"f", "new"}},
                  .nodes = {FileNode("f", kCopyModeCopyAToB)},
                  .afterScan = [](const CopyHarness& h) { Write(h, "{B}/f", "made meanwhile"); },
                  .errors = {"The item changed during the run and was skipped: \"{B}/f\""}},
        ErrorCase{.name = "FileThatAppearedWhereAFolderIsCreated",
                  .a = {{"d/", kDir}},
                  .nodes = {FolderNode("d", kCopyModeCopyAToB)},
                  .afterScan = [](const CopyHarness& h) { Write(h, "{B}/d", "made meanwhile"); },
                  .errors = {"The item changed during the run and was skipped: \"{B}/d\""}},
        ErrorCase{.name = "SourceTurnedIntoAFolder",
                  .a = {{"f", "file"}},
                  .nodes = {FileNode("f", kCopyModeCopyAToB)},
                  .afterScan =
                      [](const CopyHarness& h) {
                        Remove(h, "{A}/f");
                        trees::Build(h.Path("{A}"), {{"f/", kDir}, {"f/big", "tree"}});
                      },
                  .errors = {"The item changed during the run and was skipped: \"{A}/f\""}},
        ErrorCase{.name = "MetadataTargetEditedIsLeftAlone",
                  .a = {{"f", "same"}},
                  .b = {{"f", "same"}},
                  .nodes = {FileNode("f", kCopyModeMetadataAToB)},
                  .afterScan = [](const CopyHarness& h) { Write(h, "{B}/f", "edited"); },
                  .errors = {"The item changed during the run and was skipped: \"{B}/f\""}},
        ErrorCase{.name = "FolderHoldingANewItemIsNotDeleted",
                  .b = {{"d/", kDir}, {"d/x", "x"}},
                  .nodes = {FolderNode("d", kCopyModeDeleteInB, {FileNode("x", kCopyModeDeleteInB)})},
                  .afterScan = [](const CopyHarness& h) { Write(h, "{B}/d/new", "added"); },
                  .errors = {"Can't delete the folder \"{B}/d\"\rError: Directory not empty"},
                  .wantB = Tree{{"d/", kDir}, {"d/new", "added"}},
                  .linesBefore = "Deleted file \"{B}/d/x\"\r"},
        ErrorCase{.name = "FolderWithAChangedItemStaysOutOfTheTrash",
                  .a = {{"d/", kDir}, {"d/x", "x"}, {"d/e/", kDir}, {"d/e/y", "y"}},
                  .nodes = {FolderNode("d", kCopyModeDeleteInA,
                                       {FolderNode("e", kCopyModeDeleteInA, {FileNode("y", kCopyModeDeleteInA)}),
                                        FileNode("x", kCopyModeDeleteInA)})},
                  .afterScan = [](const CopyHarness& h) { Write(h, "{A}/d/e/y", "edited"); },
                  .errors = {"The item changed during the run and was skipped: \"{A}/d/e/y\"",
                             "Can't trash the folder (and its content) \"{A}/d\""},
                  .trash = true},
        ErrorCase{.name = "SwitchedOffItemKeepsItsFolderOutOfTheTrash",
                  .a = {{"d/", kDir}, {"d/x", "x"}, {"d/y", "y"}},
                  .nodes = {FolderNode("d", kCopyModeDeleteInA,
                                       {FileNode("x", -kCopyModeDeleteInA), FileNode("y", kCopyModeDeleteInA)})},
                  .errors = {"Can't trash the folder (and its content) \"{A}/d\""},
                  .trash = true}),
    [](const auto& info) { return std::string(info.param.name); });

// The trash refuses: the file stays where it is, and nothing is counted as trashed.
TEST(ExecutorTrash, RefusalNeverDeletes) {
  CopyHarness h({}, {{"f", "keep me"}, {"d/", kDir}, {"d/g", "g"}});
  h.fs.AddRule(FailEveryCall(FsOperation::kMoveToTrash, "", EOPNOTSUPP));
  h.state.session.gIsMoveToTrash = true;
  std::vector<ScanNode> nodes = {FolderNode("d", kCopyModeDeleteInB, {FileNode("g", kCopyModeDeleteInB)}),
                                 FileNode("f", kCopyModeDeleteInB)};

  EXPECT_FALSE(h.Run(nodes));

  EXPECT_EQ(trees::Read(h.b), (Tree{{"f", "keep me"}, {"d/", kDir}, {"d/g", "g"}}));
  ASSERT_EQ(h.Errors().size(), 3u);
  EXPECT_TRUE(h.Errors()[0].starts_with("Can't trash the folder \"{B}/d\"\rError: ")) << h.Errors()[0];
  EXPECT_EQ(h.Errors()[1], "Can't trash the folder (and its content) \"{B}/d\"");
  EXPECT_TRUE(h.Errors()[2].starts_with("Can't trash the file \"{B}/f\"\rError: ")) << h.Errors()[2];
  EXPECT_EQ(Counters(h.state.gB), "");
  EXPECT_TRUE(h.state.gItemsDeleted.empty());
  EXPECT_EQ(h.state.gTrashDetailedLogText, "");
}

// The first failure inside a folder being deleted ends that folder; the other items and the
// folders around it go on.
TEST(ExecutorDelete, OneFailureKeepsOnlyItsFolders) {
  CopyHarness h({}, {{"d/", kDir}, {"d/bad", "1"}, {"d/good", "2"}, {"other", "3"}});
  const std::string& b = h.b;
  h.fs.AddRule(FailCall(FsOperation::kRemoveItem, b + "/d/bad", EIO));
  std::vector<ScanNode> nodes = {
      FolderNode("d", kCopyModeDeleteInB, {FileNode("bad", kCopyModeDeleteInB), FileNode("good", kCopyModeDeleteInB)}),
      FileNode("other", kCopyModeDeleteInB)};

  EXPECT_FALSE(h.Run(nodes));

  EXPECT_EQ(trees::Read(b), (Tree{{"d/", kDir}, {"d/bad", "1"}}));
  EXPECT_EQ(h.Errors(), (std::vector<std::string>{"Can't delete the file \"{B}/d/bad\"\rError: Input/output error"}));
  EXPECT_EQ(Counters(h.state.gB), "FilesDeleted=2");
  EXPECT_EQ(h.state.gItemsDeleted, (std::unordered_set<std::string>{b + "/d/good", b + "/other"}));
}

}  // namespace
}  // namespace marigold::test
