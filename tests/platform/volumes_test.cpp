// Volumes on real mounts: which volume holds an item, letter case, and the trash.
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>

#include "platform/linux_file_system.h"
#include "support/platform_test_support.h"
#include "support/as_user.h"

namespace marigold {
namespace {

using test::TempFolder;
using test::WriteFile;

TEST(Volumes, MountPointTypeAndName) {
  LinuxFileSystem fs;
  auto root = fs.GetVolume("/");
  ASSERT_TRUE(root);
  EXPECT_EQ(root.Value().mountPoint, "/");
  EXPECT_FALSE(root.Value().name.empty());  // the label, or else the host name

  std::string whyNot;
  auto volume = test::TestVolume::Make("ext4", 64, &whyNot);
  if (!volume) GTEST_SKIP() << whyNot;
  ASSERT_TRUE(fs.CreateFolder(volume->Path() + "/docs", 0755, false));
  ASSERT_EQ(::symlink("/", (volume->Path() + "/docs/to-root").c_str()), 0);
  for (const std::string& inside : {volume->Path(), volume->Path() + "/docs", volume->Path() + "/docs/to-root"}) {
    auto found = fs.GetVolume(inside);
    ASSERT_TRUE(found) << inside;
    EXPECT_EQ(found.Value().mountPoint, volume->Path()) << inside;  // a link counts where it is
    EXPECT_EQ(found.Value().type, "ext4");
    EXPECT_EQ(found.Value().name, std::string(LastPathComponent(volume->Path())));
    EXPECT_FALSE(found.Value().ignoresOwnership);
    EXPECT_FALSE(found.Value().readOnly);
  }
}

TEST(Volumes, LetterCaseIsProbedPerVolume) {
  LinuxFileSystem fs;
  TempFolder tree;
  auto local = fs.IsCaseInsensitive(tree.Path(), true);
  ASSERT_TRUE(local);
  EXPECT_FALSE(local.Value());

  std::string whyNot;
  // Read-only for everyone but root, which still writes through the permission bits.
  auto stick = test::TestVolume::Make("exfat", 64, &whyNot, "umask=0222");
  if (!stick) GTEST_SKIP() << whyNot;
  auto insensitive = fs.IsCaseInsensitive(stick->Path(), true);
  ASSERT_TRUE(insensitive) << insensitive.Error().Message();
  EXPECT_TRUE(insensitive.Value());
  EXPECT_EQ(test::CountTemporaryItems(stick->Path()), 0);  // the probe is gone
  EXPECT_TRUE(fs.GetVolume(stick->Path()).Value().ignoresOwnership);

  // A folder the user may not write to is judged by the names already in it.
  WriteFile(stick->Path() + "/Existing", "");
  std::string answer = OutputAsUser(test::kThrowawayUser, [&] {
    LinuxFileSystem child;
    auto probed = child.IsCaseInsensitive(stick->Path(), true);
    return probed ? std::string(probed.Value() ? "insensitive" : "sensitive") : probed.Error().Message();
  });
  EXPECT_EQ(answer, "insensitive");
}

// GIO reads HOME and XDG_DATA_HOME once per process, so they are set before its first use.
class Trash : public ::testing::Test {
 protected:
  static void SetUpTestSuite() {
    sHome = new TempFolder("/tmp");
    ::setenv("HOME", sHome->Path().c_str(), 1);
    ::setenv("XDG_DATA_HOME", (sHome->Path() + "/data").c_str(), 1);
  }
  static void TearDownTestSuite() {
    delete sHome;
    sHome = nullptr;
  }
  static TempFolder* sHome;
};
TempFolder* Trash::sHome = nullptr;

TEST_F(Trash, ItemGoesToTheHomeTrashOfItsVolume) {
  TempFolder tree;  // on the same volume as the home folder
  LinuxFileSystem fs;
  WriteFile(tree / "old notes.txt", "keep me");
  ASSERT_TRUE(fs.CreateFolder(tree / "folder/inner", 0755, true));
  for (const char* name : {"old notes.txt", "folder"}) {
    FsStatus trashed = fs.MoveToTrash(tree / name);
    ASSERT_TRUE(trashed) << trashed.Error().Message();
    EXPECT_TRUE(fs.GetAttributes(tree / name).Error().IsMissing());
  }
  std::string trash = sHome->Path() + "/data/Trash";
  EXPECT_EQ(test::ReadFile(trash + "/files/old notes.txt"), "keep me");
  EXPECT_TRUE(fs.GetAttributes(trash + "/files/folder/inner"));
  EXPECT_NE(test::ReadFile(trash + "/info/old notes.txt.trashinfo").find("Path="), std::string::npos);
}

TEST_F(Trash, RefusalLeavesTheItemAndSaysCannotTrash) {
  std::string whyNot;
  auto volume = test::TestVolume::Make("tmpfs", 2, &whyNot);
  if (!volume) GTEST_SKIP() << whyNot;
  LinuxFileSystem fs;
  std::string item = volume->Path() + "/precious";
  WriteFile(item, "still here");
  FsStatus trashed = fs.MoveToTrash(item);
  ASSERT_FALSE(trashed);
  EXPECT_EQ(trashed.Error().problem, FsProblem::kCannotTrash);
  EXPECT_EQ(trashed.Error().path, item);
  EXPECT_NE(trashed.Error().Message().find("cannot trash"), std::string::npos);
  EXPECT_EQ(test::ReadFile(item), "still here");
  EXPECT_EQ(fs.MoveToTrash(volume->Path() + "/none").Error().problem, FsProblem::kCannotTrash);
}

}  // namespace
}  // namespace marigold
