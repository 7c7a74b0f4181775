// Locked and read-only items opened for a run and shut again behind it, never above a task's
// main folders.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "guard_harness.h"

namespace marigold::guard_test {
namespace {

bool IsLocked(const std::string& path) {
  LinuxFileSystem fs;
  auto attributes = fs.GetAttributes(path);
  return attributes && attributes.Value().isLocked;
}

class LockedItems : public ::testing::Test {
 protected:
  void SetUp() override {
    if (::geteuid() != 0) GTEST_SKIP() << "only root can lock items";
    trees::Build(run.A(), {{"frozen/new.txt", "new"}, {"locked.txt", "newer"}, {"top.txt", "top"}});
    trees::Build(run.B(), {{"frozen/", ""}, {"locked.txt", "older"}});
    trees::SetModified(run.A("locked.txt"), 1'700'000'000);
    trees::SetModified(run.B("locked.txt"), 1'600'000'000);
    // Backups never overwrite a newer destination unless told; this one is older.
    for (const char* path : {"frozen", "locked.txt", ""}) ASSERT_TRUE(run.realFs.SetLocked(run.B(path), true));
  }
  GuardRun run;
};

TEST_F(LockedItems, AreOpenedForTheRunAndShutAgain) {
  run.Run();

  EXPECT_EQ(run.Errors(), std::vector<std::string>{});
  EXPECT_EQ(trees::Read(run.B()), (trees::Tree{{"frozen/", ""}, {"frozen/new.txt", "new"}, {"locked.txt", "newer"},
                                               {"top.txt", "top"}}));
  // The folders are locked again, the task's own folder too; the replaced file is the source's copy.
  EXPECT_TRUE(IsLocked(run.B("frozen")));
  EXPECT_TRUE(IsLocked(run.B()));
  EXPECT_FALSE(IsLocked(run.B("locked.txt")));
}

TEST_F(LockedItems, StayShutWhenTheSessionLeavesThemAlone) {
  run.Setting("settLockedItems", 0);
  run.Run();

  // Each item in a locked folder or locked itself is reported by the scan, then refused.
  int reported = 0;
  for (const std::string& error : run.Errors()) reported += error.rfind("Item Locked", 0) == 0;
  EXPECT_EQ(reported, 3);
  EXPECT_EQ(run.Errors().size(), 6u);
  EXPECT_EQ(trees::Read(run.B()), (trees::Tree{{"frozen/", ""}, {"locked.txt", "older"}}));
  EXPECT_TRUE(IsLocked(run.B()) && IsLocked(run.B("frozen")) && IsLocked(run.B("locked.txt")));
}

TEST(Unlocking, NeverGoesAboveTheMainFolder) {
  if (::geteuid() != 0) GTEST_SKIP() << "only root can lock items";
  GuardCall call;
  call.state.session.gIsUnlockOn = true;
  trees::Build(call.temp.Join("above/main/sub"), {{"f.txt", "f"}});
  const std::string above = call.temp.Join("above"), main = above + "/main", sub = main + "/sub";
  for (const std::string& path : {above, main, sub}) ASSERT_TRUE(call.fs.SetLocked(path, true));
  ItemUnlocking& unlocking = call.guard.Unlocking();

  // Writing into sub needs sub alone.
  EXPECT_TRUE(unlocking.UnlockChain(sub, main, kCheckWritable));
  EXPECT_FALSE(IsLocked(sub));
  EXPECT_TRUE(IsLocked(main));
  // Deleting the main folder would need the folder above it: refused, and that folder stays locked.
  EXPECT_FALSE(unlocking.UnlockChain(main, main, kCheckDeletable));
  EXPECT_TRUE(IsLocked(above));
  // What was opened goes back when the walk of the folders it was opened in ends.
  EXPECT_EQ(unlocking.PendingRestores(), 2u);
  EXPECT_TRUE(unlocking.RestoreOriginalAttr(sub, "/elsewhere"));
  EXPECT_TRUE(IsLocked(sub));
  EXPECT_FALSE(IsLocked(main));
  EXPECT_TRUE(unlocking.RestoreOriginalAttr(above, "/elsewhere"));
  EXPECT_TRUE(IsLocked(main));
  EXPECT_EQ(unlocking.PendingRestores(), 0u);
  EXPECT_FALSE(unlocking.RestoreOriginalAttr(above, "/elsewhere"));  // nothing left to put back
}

TEST(Unlocking, ForgetsWhatWasReplacedOrDeleted) {
  if (::geteuid() != 0) GTEST_SKIP() << "only root can lock items";
  GuardCall call;
  call.state.session.gIsUnlockOn = true;
  trees::Build(call.temp.Join("main"), {{"gone/x.txt", "x"}, {"kept.txt", "k"}});
  const std::string main = call.temp.Join("main");
  ASSERT_TRUE(call.fs.SetLocked(main + "/gone/x.txt", true));
  ASSERT_TRUE(call.fs.SetLocked(main + "/kept.txt", true));
  ItemUnlocking& unlocking = call.guard.Unlocking();
  ASSERT_TRUE(unlocking.UnlockChain(main + "/gone/x.txt", main, kCheckDeletable));
  ASSERT_TRUE(unlocking.UnlockChain(main + "/kept.txt", main, kCheckDeletable));
  unlocking.RemoveItemOKFromRestore(main + "/gone");
  EXPECT_EQ(unlocking.PendingRestores(), 1u);
  ASSERT_TRUE(unlocking.UnlockWholeItem(main));
  EXPECT_FALSE(IsLocked(main + "/kept.txt"));
}

// A user who owns a read-only folder: the run opens it to write, then gives it its mode back.
TEST(ReadOnlyFolders, AreOpenedForTheOwnerAndShutAgain) {
  if (::geteuid() != 0) GTEST_SKIP() << "needs root to act as another user";
  GuardRun run;
  trees::Build(run.A(), {{"ro/deep/new.txt", "new"}, {"ro/top.txt", "top"}});
  trees::Build(run.B(), {{"ro/deep/", ""}});
  GiveTree(run.temp.Path(), kNobody);
  ASSERT_EQ(::chmod(run.temp.Path().c_str(), 0755), 0);
  ASSERT_EQ(::chmod(run.B("ro/deep").c_str(), 0555), 0);
  ASSERT_EQ(::chmod(run.B("ro").c_str(), 0500), 0);
  // Older source folders: a backup then leaves the destination folders' own modes alone.
  trees::SetModified(run.A("ro/deep"), 1'600'000'000);
  trees::SetModified(run.A("ro"), 1'600'000'000);

  const std::string out = OutputAsUser(kNobody, [&] {
    run.Run();
    std::string errors;
    for (const std::string& error : run.Errors()) errors += error + "\n";
    return errors;
  });

  EXPECT_EQ(out, "");
  EXPECT_EQ(trees::Read(run.B()),
            (trees::Tree{{"ro/", ""}, {"ro/deep/", ""}, {"ro/deep/new.txt", "new"}, {"ro/top.txt", "top"}}));
  EXPECT_EQ(trees::ModeOf(run.B("ro/deep")), 0555u);
  EXPECT_EQ(trees::ModeOf(run.B("ro")), 0500u);
}

}  // namespace
}  // namespace marigold::guard_test
