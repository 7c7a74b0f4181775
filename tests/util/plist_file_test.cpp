#include <gtest/gtest.h>
#include <sys/mount.h>
#include <sys/stat.h>

#include <filesystem>
#include <set>

#include "support/temp_folder.h"
#include "support/tree_values.h"
#include "util/plist_io.h"

namespace marigold {
namespace {

std::set<std::string> Names(const std::string& folder) {
  std::set<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(folder))
    names.insert(entry.path().filename().string());
  return names;
}

using trees::ModeOf;

TEST(WriteFileAtomically, ReplacesAndKeepsTheMode) {
  TempFolder folder;
  const std::string path = folder.WriteFile("doc.mgy", "old");
  ASSERT_EQ(::chmod(path.c_str(), 0700), 0);  // documents that hold a password
  std::string error;
  ASSERT_TRUE(WriteFileAtomically(path, "new contents", &error)) << error;
  EXPECT_EQ(folder.ReadFile("doc.mgy"), "new contents");
  EXPECT_EQ(ModeOf(path), 0700u);
  EXPECT_EQ(Names(folder.Path()), std::set<std::string>{"doc.mgy"});
}

TEST(WriteFileAtomically, NewFileFollowsTheUmask) {
  TempFolder folder;
  const mode_t old = ::umask(027);
  const bool written = WriteXmlPlistFile(folder.Join("prefs.plist"), PlistValue(PlistDict{{"a", 1}}));
  ::umask(old);
  ASSERT_TRUE(written);
  EXPECT_EQ(ModeOf(folder.Join("prefs.plist")), 0640u);
  EXPECT_EQ(ReadPlistDictFile(folder.Join("prefs.plist")), (PlistDict{{"a", 1}}));
}

// A small tmpfs gives a real full disk and, remounted, a read-only folder. Mounting needs root
// (or a user namespace); without it the test is skipped.
class SmallVolume : public ::testing::Test {
 protected:
  void SetUp() override {
    mMount = mFolder.Join("volume");
    ::mkdir(mMount.c_str(), 0755);
    if (::mount("tmpfs", mMount.c_str(), "tmpfs", 0, "size=64k") != 0)
      GTEST_SKIP() << "cannot mount a tmpfs here";
    mMounted = true;
  }
  void TearDown() override {
    if (mMounted) ::umount2(mMount.c_str(), MNT_DETACH);
  }

  TempFolder mFolder;
  std::string mMount;
  bool mMounted = false;
};

TEST_F(SmallVolume, FullDiskOrReadOnlyFolderLeavesTheOldFile) {
  const std::string path = mMount + "/doc.mgy";
  ASSERT_TRUE(WriteFileAtomically(path, "old"));
  std::string error;
  EXPECT_FALSE(WriteFileAtomically(path, std::string(1 << 20, 'n'), &error));
  EXPECT_FALSE(error.empty());
  EXPECT_EQ(mFolder.ReadFile(path), "old");
  EXPECT_EQ(Names(mMount), std::set<std::string>{"doc.mgy"});

  ASSERT_EQ(::mount("tmpfs", mMount.c_str(), "tmpfs", MS_REMOUNT | MS_RDONLY, "size=64k"), 0);
  EXPECT_FALSE(WriteFileAtomically(path, "new", &error));
  EXPECT_NE(error.find(mMount), std::string::npos) << error;
  EXPECT_EQ(mFolder.ReadFile(path), "old");
}

}  // namespace
}  // namespace marigold
