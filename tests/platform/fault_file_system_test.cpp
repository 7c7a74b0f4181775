// The forwarding file system that tests of the engine use to make single calls fail.
#include "support/fault_file_system.h"

#include <gtest/gtest.h>

#include "platform/linux_file_system.h"
#include "support/platform_test_support.h"

namespace marigold {
namespace {

using test::ReadFile;
using test::TempFolder;
using test::WriteFile;

TEST(FaultFileSystem, FailsOnlyTheChosenCall) {
  TempFolder tree;
  LinuxFileSystem real;
  FaultFileSystem fs{real, {FailCall(FsOperation::kRename, tree / "b", EIO, 2)}};
  for (const char* name : {"a", "b", "c"}) WriteFile(tree / name, name);
  EXPECT_TRUE(fs.Rename(tree / "a", tree / "b", true));  // first call naming b (as destination)
  auto second = fs.Rename(tree / "b", tree / "b2", false);
  ASSERT_FALSE(second);
  EXPECT_EQ(second.Error().code, EIO);
  EXPECT_EQ(second.Error().operation, "rename");
  EXPECT_EQ(ReadFile(tree / "b"), "a");                   // the failed call did nothing
  EXPECT_TRUE(fs.Rename(tree / "b", tree / "b2", false));  // third call goes through
  EXPECT_TRUE(fs.Rename(tree / "c", tree / "c2", false));  // other paths were never affected
  EXPECT_EQ(fs.CountCalls(FsOperation::kRename), 4);
  EXPECT_EQ(fs.Calls()[1].secondPath, tree / "b2");

  fs.AddRule(FailEveryCall(FsOperation::kMoveToTrash, {}, EACCES));
  for (int i = 0; i < 2; ++i) EXPECT_EQ(fs.MoveToTrash(tree / "c2").Error().problem, FsProblem::kCannotTrash);
  EXPECT_EQ(ReadFile(tree / "c2"), "c");
}

}  // namespace
}  // namespace marigold
