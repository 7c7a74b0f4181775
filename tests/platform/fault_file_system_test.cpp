// The forwarding file system that tests of the engine use to make single calls fail.
#include "platform/fault_file_system.h"

#include <gtest/gtest.h>

#include "platform/linux_file_system.h"
#include "platform_test_support.h"

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

TEST(FaultFileSystem, ItemsVanishOrChangeJustBeforeACall) {
  TempFolder tree;
  LinuxFileSystem real;
  WriteFile(tree / "gone", "x");
  WriteFile(tree / "edited", "before");
  ItemSnapshot seen = ItemSnapshot::Of(real.GetAttributes(tree / "edited").Value());
  FaultFileSystem fs{real, {VanishBefore(FsOperation::kRemoveItem, tree / "gone"),
                            RunBefore(FsOperation::kGetAttributes, tree / "edited",
                                      [&] { WriteFile(tree / "edited", "after, longer"); })}};
  auto removed = fs.RemoveItem(tree / "gone");
  ASSERT_FALSE(removed);
  EXPECT_TRUE(removed.Error().IsMissing());
  auto still = StillMatches(fs, tree / "edited", seen);
  ASSERT_TRUE(still);
  EXPECT_FALSE(still.Value());
  EXPECT_TRUE(StillMatches(fs, tree / "edited", ItemSnapshot::Of(real.GetAttributes(tree / "edited").Value())).Value());
  EXPECT_TRUE(StillMatches(fs, tree / "gone", ItemSnapshot::Absent()).Value());
  EXPECT_FALSE(StillMatches(fs, tree / "gone", seen).Value());
}

}  // namespace
}  // namespace marigold
