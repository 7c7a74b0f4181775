// Every action of the executor on real trees: what is on disk afterwards, the counters of each
// side, the detailed log, and the run's item tallies.
#include <gtest/gtest.h>

#include <optional>

#include "copy_harness.h"

namespace marigold::test {
namespace {

struct ActionCase {
  const char* name;
  Tree a, b;
  std::vector<ScanNode> nodes;
  std::optional<Tree> wantA, wantB;  // nothing: as before the run
  std::string countersA, countersB;
  std::string log;
  int performed = 0;  // nodes carried out, each one less to do
  bool trash = false;
};

class ExecutorActs : public ::testing::TestWithParam<ActionCase> {};

TEST_P(ExecutorActs, OnDiskCountersAndLog) {
  const ActionCase& c = GetParam();
  CopyHarness h(c.a, c.b);
  h.state.session.gIsMoveToTrash = c.trash;
  h.state.tallies.runItemsToDo = 100;
  std::vector<ScanNode> nodes = c.nodes;

  EXPECT_TRUE(h.Run(nodes));

  EXPECT_EQ(trees::Read(h.a), c.wantA.value_or(c.a));
  EXPECT_EQ(trees::Read(h.b), c.wantB.value_or(c.b));
  EXPECT_EQ(Counters(h.state.gA), c.countersA);
  EXPECT_EQ(Counters(h.state.gB), c.countersB);
  EXPECT_EQ(h.Log(), c.log);
  EXPECT_EQ(h.state.tallies.runItemsToDo.load(), 100 - c.performed);
  EXPECT_EQ(h.state.gAtLeastOneItemDone, c.performed > 0);
  EXPECT_EQ(h.state.gTotError, 0);
  EXPECT_TRUE(h.Errors().empty()) << h.Errors().front();
  EXPECT_TRUE(h.state.gTrashDetailedLogText.empty());
}

const std::string kPackage = "Tool.app/";

INSTANTIATE_TEST_SUITE_P(
    Copy, ExecutorActs,
    ::testing::Values(
        ActionCase{.name = "FileToB",
                   .a = {{"f", "one"}},
                   .nodes = {FileNode("f", kCopyModeCopyAToB)},
                   .wantB = Tree{{"f", "one"}},
                   .countersB = "FilesCopied=1 ItemVisible=1",
                   .log = "Copied file \"{A}/f\"\rto: \"{B}/f\"\r",
                   .performed = 1},
        ActionCase{.name = "HiddenFileBackToA",
                   .b = {{".h", "hidden"}},
                   .nodes = {FileNode(".h", kCopyModeCopyBToA)},
                   .wantA = Tree{{".h", "hidden"}},
                   .countersA = "FilesCopied=1 ItemInvisible=1",
                   .log = "Copied file \"{B}/.h\"\rto: \"{A}/.h\"\r",
                   .performed = 1},
        ActionCase{.name = "FolderWithItsItems",
                   .a = {{"d/", kDir}, {"d/g", "gee"}, {"d/empty/", kDir}},
                   .nodes = {FolderNode("d", kCopyModeCopyAToB,
                                        {FolderNode("empty", kCopyModeCopyAToB), FileNode("g", kCopyModeCopyAToB)})},
                   .wantB = Tree{{"d/", kDir}, {"d/g", "gee"}, {"d/empty/", kDir}},
                   .countersB = "FoldersCreated=2 FilesCopied=1 ItemVisible=1",
                   .log = "Created folder \"{B}/d\"\rCreated folder \"{B}/d/empty\"\r"
                          "Copied file \"{A}/d/g\"\rto: \"{B}/d/g\"\r",
                   .performed = 3},
        ActionCase{.name = "PackageAsOneItem",
                   .a = {{kPackage, kDir}, {kPackage + "Contents/", kDir}, {kPackage + "Contents/bin", "exe"}},
                   .nodes = {FileNode("Tool.app", kCopyModeCopyAToB)},
                   .wantB = Tree{{kPackage, kDir}, {kPackage + "Contents/", kDir}, {kPackage + "Contents/bin", "exe"}},
                   .countersB = "FilesCopied=1 ItemVisible=1",
                   .log = "Copied file \"{A}/Tool.app\"\rto: \"{B}/Tool.app\"\r",
                   .performed = 1},
        ActionCase{.name = "LinkAsALink",
                   .a = {{"l", LinkTo("nowhere")}},
                   .nodes = {FileNode("l", kCopyModeCopyAToB)},
                   .wantB = Tree{{"l", LinkTo("nowhere")}},
                   .countersB = "FilesCopied=1 ItemVisible=1",
                   .log = "Copied file \"{A}/l\"\rto: \"{B}/l\"\r",
                   .performed = 1}),
    [](const auto& info) { return std::string(info.param.name); });

INSTANTIATE_TEST_SUITE_P(
    Replace, ExecutorActs,
    ::testing::Values(
        ActionCase{.name = "OlderFileInB",
                   .a = {{"f", "new"}},
                   .b = {{"f", "old"}},
                   .nodes = {FileNode("f", kCopyModeReplaceAToB)},
                   .wantB = Tree{{"f", "new"}},
                   .countersB = "FilesReplaced=1 ItemVisible=1",
                   .log = "Replaced file: \"{B}/f\"\rwith the most recent file: \"{A}/f\"\r",
                   .performed = 1},
        ActionCase{.name = "OlderFileInA",
                   .a = {{"d/", kDir}, {"d/.f", "old"}},
                   .b = {{"d/", kDir}, {"d/.f", "newer"}},
                   .nodes = {FolderNode("d", kCopyModeNothing, {FileNode(".f", kCopyModeReplaceBToA)})},
                   .wantA = Tree{{"d/", kDir}, {"d/.f", "newer"}},
                   .countersA = "FilesReplaced=1 ItemInvisible=1",
                   .log = "Replaced file: \"{A}/d/.f\"\rwith the most recent file: \"{B}/d/.f\"\r",
                   .performed = 1},
        ActionCase{.name = "FileReplacesFolder",
                   .a = {{"x", "file"}},
                   .b = {{"x/", kDir}, {"x/inner", "i"}},
                   .nodes = {FileNode("x", kCopyModeReplaceAToB)},
                   .wantB = Tree{{"x", "file"}},
                   .countersB = "FilesReplaced=1 ItemVisible=1",
                   .log = "Replaced file: \"{B}/x\"\rwith the most recent file: \"{A}/x\"\r",
                   .performed = 1},
        ActionCase{.name = "FolderReplacesFile",
                   .a = {{"x/", kDir}, {"x/inner", "i"}},
                   .b = {{"x", "file"}},
                   .nodes = {FileNode("x", kCopyModeReplaceAToB)},
                   .wantB = Tree{{"x/", kDir}, {"x/inner", "i"}},
                   .countersB = "FilesReplaced=1 ItemVisible=1",
                   .log = "Replaced file: \"{B}/x\"\rwith the most recent file: \"{A}/x\"\r",
                   .performed = 1}),
    [](const auto& info) { return std::string(info.param.name); });

const Tree kFolderTree = {{"d/", kDir}, {"d/x", "x"}, {"d/e/", kDir}, {"d/e/y", "y"}};
std::vector<ScanNode> FolderTreeNodes(int mode) {
  return {FolderNode("d", mode, {FolderNode("e", mode, {FileNode("y", mode)}), FileNode("x", mode)})};
}

INSTANTIATE_TEST_SUITE_P(
    Delete, ExecutorActs,
    ::testing::Values(
        ActionCase{.name = "FileInB",
                   .a = {{"keep", "k"}},
                   .b = {{"f", "gone"}},
                   .nodes = {FileNode("f", kCopyModeDeleteInB)},
                   .wantB = Tree{},
                   .countersB = "FilesDeleted=1",
                   .log = "Deleted file \"{B}/f\"\r",
                   .performed = 1},
        ActionCase{.name = "PackageInB",
                   .b = {{kPackage, kDir}, {kPackage + "bin", "exe"}},
                   .nodes = {FileNode("Tool.app", kCopyModeDeleteInB)},
                   .wantB = Tree{},
                   .countersB = "FilesDeleted=1",
                   .log = "Deleted file \"{B}/Tool.app\"\r",
                   .performed = 1},
        ActionCase{.name = "FolderWithContentsInA",
                   .a = kFolderTree,
                   .nodes = FolderTreeNodes(kCopyModeDeleteInA),
                   .wantA = Tree{},
                   .countersA = "FoldersDeleted=2 FilesDeleted=2",
                   .log = "Deleted file \"{A}/d/e/y\"\rDeleted folder \"{A}/d/e\"\r"
                          "Deleted file \"{A}/d/x\"\rDeleted folder \"{A}/d\"\r",
                   .performed = 4},
        ActionCase{.name = "EmptyFolderInB",
                   .b = {{"e/", kDir}},
                   .nodes = {FolderNode("e", kCopyModeDeleteInB)},
                   .wantB = Tree{},
                   .countersB = "FoldersDeleted=1",
                   .log = "Deleted folder \"{B}/e\"\r",
                   .performed = 1},
        ActionCase{.name = "FileToTrash",
                   .b = {{"f", "gone"}},
                   .nodes = {FileNode("f", kCopyModeDeleteInB)},
                   .wantB = Tree{},
                   .countersB = "FilesTrashed=1",
                   .log = "Trashed file \"{B}/f\"\r",
                   .performed = 1,
                   .trash = true},
        ActionCase{.name = "FolderToTrashAsAWhole",
                   .a = kFolderTree,
                   .nodes = FolderTreeNodes(kCopyModeDeleteInA),
                   .wantA = Tree{},
                   .countersA = "FoldersTrashed=2 FilesTrashed=2",
                   .log = "Trashed folder \"{A}/d\"\rTrashed file \"{A}/d/e/y\"\rTrashed folder \"{A}/d/e\"\r"
                          "Trashed file \"{A}/d/x\"\r",
                   .performed = 4,
                   .trash = true}),
    [](const auto& info) { return std::string(info.param.name); });

INSTANTIATE_TEST_SUITE_P(
    Walk, ExecutorActs,
    ::testing::Values(
        ActionCase{.name = "SwitchedOffItemsAreLeftAlone",
                   .a = {{"f", "new"}, {"d/", kDir}, {"d/g", "g"}},
                   .b = {{"f", "old"}, {"h", "h"}},
                   .nodes = {FolderNode("d", -kCopyModeCopyAToB, {FileNode("g", -kCopyModeCopyAToB)}),
                             FileNode("f", -kCopyModeReplaceAToB), FileNode("h", -kCopyModeDeleteInB)}},
        ActionCase{.name = "SwitchedOffFolderStillWalked",
                   .a = {{"d/", kDir}, {"d/g", "g"}},
                   .b = {{"d/", kDir}},
                   .nodes = {FolderNode("d", -kCopyModeMetadataAToB, {FileNode("g", kCopyModeCopyAToB)})},
                   .wantB = Tree{{"d/", kDir}, {"d/g", "g"}},
                   .countersB = "FilesCopied=1 ItemVisible=1",
                   .log = "Copied file \"{A}/d/g\"\rto: \"{B}/d/g\"\r",
                   .performed = 1},
        ActionCase{.name = "SkipAndNothingDoNothing",
                   .a = {{"f", "a"}, {"g", "a"}},
                   .b = {{"f", "b"}, {"g", "b"}},
                   .nodes = {FileNode("f", kCopyModeSkip), FileNode("g", kCopyModeNothing)}},
        ActionCase{.name = "BothDirectionsInOneFolder",
                   .a = {{"d/", kDir}, {"d/fromA", "1"}},
                   .b = {{"d/", kDir}, {"d/fromB", "2"}},
                   .nodes = {FolderNode("d", kCopyModeNothing,
                                        {FileNode("fromA", kCopyModeCopyAToB), FileNode("fromB", kCopyModeCopyBToA)})},
                   .wantA = Tree{{"d/", kDir}, {"d/fromA", "1"}, {"d/fromB", "2"}},
                   .wantB = Tree{{"d/", kDir}, {"d/fromA", "1"}, {"d/fromB", "2"}},
                   .countersA = "FilesCopied=1 ItemVisible=1",
                   .countersB = "FilesCopied=1 ItemVisible=1",
                   .log = "Copied file \"{A}/d/fromA\"\rto: \"{B}/d/fromA\"\r"
                          "Copied file \"{B}/d/fromB\"\rto: \"{A}/d/fromB\"\r",
                   .performed = 2}),
    [](const auto& info) { return std::string(info.param.name); });

TEST(ExecutorTrash, FolderArrivesInTheTrashWithItsContents) {
  CopyHarness h({{"trashme-7f3a/", kDir}, {"trashme-7f3a/inner", "i"}}, {});
  h.state.session.gIsMoveToTrash = true;
  std::vector<ScanNode> nodes = {FolderNode("trashme-7f3a", kCopyModeDeleteInA, {FileNode("inner", kCopyModeDeleteInA)})};

  ASSERT_TRUE(h.Run(nodes));

  EXPECT_EQ(ReadFile(TrashFilesFolder() + "/trashme-7f3a/inner"), "i");
  EXPECT_TRUE(h.state.gItemsDeleted.count(h.a + "/trashme-7f3a"));
}

// The restore list of locked and opened items hears of each item written and each folder walked.
TEST(ExecutorServices, RestoreListFollowsTheWalk) {
  CopyHarness h({{"d/", kDir}, {"d/e/", kDir}, {"d/e/f", "x"}}, {{"d/", kDir}});
  const std::string &a = h.a, &b = h.b;
  std::vector<ScanNode> nodes = {
      FolderNode("d", kCopyModeNothing, {FolderNode("e", kCopyModeCopyAToB, {FileNode("f", kCopyModeCopyAToB)})})};

  ASSERT_TRUE(h.Run(nodes));

  EXPECT_EQ(h.services.restoreCalls, (std::vector<std::string>{"release " + b + "/d/e", "release " + b + "/d/e/f",
                                                      "restore " + a + "/d/e " + b + "/d/e",
                                                      "restore " + a + "/d " + b + "/d",
                                                      "restore " + a + " " + b}));
}

}  // namespace
}  // namespace marigold::test
