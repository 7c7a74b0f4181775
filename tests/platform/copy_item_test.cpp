// Copies on a real disk: what a copy carries, how it replaces, and what it leaves when it fails.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include "platform/linux_file_system.h"
#include "support/platform_test_support.h"

namespace marigold {
namespace {

using test::CountTemporaryItems;
using test::ReadFile;
using test::TempFolder;
using test::WriteFile;

std::string Xattr(const std::string& path, const char* name) {
  char value[256];
  ssize_t n = ::lgetxattr(path.c_str(), name, value, sizeof value);
  return n < 0 ? "<none>" : std::string(value, static_cast<std::size_t>(n));
}

std::string Acl(const std::string& path) {
  std::string text;
  test::RunCommand("getfacl -cp '" + path + "' 2>/dev/null", &text);
  return text;
}

// Each row: what the destination holds, what replaces it; afterwards the destination holds the
// source's kind and content, and nothing temporary remains.
TEST(CopyItem, ReplacesEveryKindAtomically) {
  struct Case { const char* what; const char* source; const char* dest; ItemKind kind; };
  for (const Case& c : {Case{"file over file", "file", "file", ItemKind::kFile},
                        Case{"link over file", "link", "file", ItemKind::kSymlink},
                        Case{"package over package", "Pkg.app", "Pkg.app", ItemKind::kFolder},
                        Case{"package over file", "Pkg.app", "file", ItemKind::kFolder},
                        Case{"file over package", "file", "Pkg.app", ItemKind::kFile}}) {
    TempFolder tree;
    LinuxFileSystem fs;
    for (const std::string& side : {tree / "a", tree / "b"}) {
      ASSERT_TRUE(fs.CreateFolder(side, 0755, false));
      bool isA = side == tree / "a";
      WriteFile(side + "/file", isA ? "new file" : "old file");
      ASSERT_EQ(::symlink("target", (side + "/link").c_str()), 0);
      ASSERT_TRUE(fs.CreateFolder(side + "/Pkg.app/Contents", 0755, true));
      WriteFile(side + "/Pkg.app/Contents/" + (isA ? "new" : "old"), "inside");
      ::chmod((side + "/Pkg.app/Contents").c_str(), 0555);
    }
    std::string dest = tree / "b/" + c.dest;
    CopyOptions options;
    options.replaceExisting = true;
    auto copied = fs.CopyItem(tree / "a/" + c.source, dest, options);
    ASSERT_TRUE(copied) << c.what << ": " << copied.Error().Message();
    EXPECT_EQ(fs.GetAttributes(dest).Value().kind, c.kind) << c.what;
    if (c.kind == ItemKind::kFile) {
      EXPECT_EQ(ReadFile(dest), "new file") << c.what;
    }
    if (c.kind == ItemKind::kFolder) {
      EXPECT_EQ(ReadFile(dest + "/Contents/new"), "inside") << c.what;
      EXPECT_FALSE(fs.GetAttributes(dest + "/Contents/old")) << c.what;
      EXPECT_EQ(fs.GetAttributes(dest + "/Contents").Value().mode, 0555u) << c.what;
    }
    EXPECT_EQ(CountTemporaryItems(tree / "b"), 0) << c.what;
  }
}

TEST(CopyItem, ExistingDestinationIsKeptUnlessReplacing) {
  TempFolder tree;
  LinuxFileSystem fs;
  WriteFile(tree / "a", "new");
  WriteFile(tree / "b", "old");
  auto refused = fs.CopyItem(tree / "a", tree / "b", {});
  ASSERT_FALSE(refused);
  EXPECT_EQ(refused.Error().code, EEXIST);
  EXPECT_EQ(ReadFile(tree / "b"), "old");
  EXPECT_EQ(fs.CopyItem(tree / "none", tree / "c", {}).Error().code, ENOENT);
  EXPECT_EQ(fs.CopyItem(tree / "a", tree / "no/such/folder", {}).Error().code, ENOENT);
  EXPECT_EQ(CountTemporaryItems(tree.Path()), 0);
}

TEST(CopyItem, FullDiskKeepsTheOldFileAndLeavesNoTemporary) {
  std::string whyNot;
  auto volume = test::TestVolume::Make("tmpfs", 2, &whyNot);
  if (!volume) GTEST_SKIP() << whyNot;
  TempFolder tree;
  LinuxFileSystem fs;
  WriteFile(tree / "big", std::string(3 << 20, 'n'));
  std::string dest = volume->Path() + "/doc";
  WriteFile(dest, "old");
  CopyOptions options;
  options.replaceExisting = true;
  auto copied = fs.CopyItem(tree / "big", dest, options);
  ASSERT_FALSE(copied);
  EXPECT_EQ(copied.Error().code, ENOSPC);
  EXPECT_EQ(copied.Error().path, dest);
  EXPECT_EQ(ReadFile(dest), "old");
  EXPECT_EQ(CountTemporaryItems(volume->Path()), 0);
  EXPECT_LE(fs.GetFreeSpace(volume->Path()).Value(), 2u << 20);
}

TEST(CopyMetadata, MakesAnExistingItemAgreeAndKeepsItsOwnAttributes) {
  TempFolder tree;
  LinuxFileSystem fs;
  WriteFile(tree / "a", "same", 0600);
  WriteFile(tree / "b", "same", 0644);
  ASSERT_EQ(::lsetxattr((tree / "a").c_str(), "user.from", "a", 1, 0), 0);
  ASSERT_EQ(::lsetxattr((tree / "b").c_str(), "user.only", "b", 1, 0), 0);
  ASSERT_EQ(test::RunCommand("setfacl -m u:54321:r '" + tree / "b" + "'"), 0);
  ASSERT_TRUE(fs.SetTimes(tree / "a", {123, 456}, std::nullopt));
  ASSERT_TRUE(fs.CopyMetadata(tree / "a", tree / "b"));
  auto b = fs.GetAttributes(tree / "b").Value();
  EXPECT_EQ(b.mode, 0600u);
  EXPECT_EQ(b.modificationTime, (FileTime{123, 456}));
  EXPECT_EQ(Xattr(tree / "b", "user.from"), "a");
  EXPECT_EQ(Xattr(tree / "b", "user.only"), "b");
  EXPECT_EQ(Acl(tree / "b"), Acl(tree / "a"));  // the extra access entry is gone
}

TEST(BackupDate, StoredAsDecimalSecondsAndAbsentWhereRefused) {
  TempFolder tree;
  LinuxFileSystem fs;
  WriteFile(tree / "f", "");
  EXPECT_FALSE(fs.GetBackupDate(tree / "f").has_value());
  ASSERT_TRUE(fs.SetBackupDate(tree / "f", 1234567890));
  EXPECT_EQ(Xattr(tree / "f", kBackupDateAttribute), "1234567890");
  EXPECT_EQ(fs.GetBackupDate(tree / "f"), 1234567890);
  ASSERT_EQ(::lsetxattr((tree / "f").c_str(), kBackupDateAttribute, "12x", 3, 0), 0);
  EXPECT_FALSE(fs.GetBackupDate(tree / "f").has_value());
  ASSERT_EQ(::symlink("f", (tree / "link").c_str()), 0);
  EXPECT_FALSE(fs.SetBackupDate(tree / "link", 1));
  EXPECT_FALSE(fs.GetBackupDate(tree / "link").has_value());
  EXPECT_FALSE(fs.GetBackupDate(tree / "none").has_value());
}

// A USB stick: no owners, modes, links, extended attributes or exchange of names; copies onto it
// still succeed with what it can keep, and replacing a package still leaves no trace.
TEST(CopyItem, OntoAVolumeThatKeepsLittle) {
  std::string whyNot;
  auto stick = test::TestVolume::Make("exfat", 64, &whyNot);
  if (!stick) GTEST_SKIP() << whyNot;
  TempFolder tree;
  LinuxFileSystem fs;
  WriteFile(tree / "doc", "new", 0600);
  ASSERT_EQ(::lsetxattr((tree / "doc").c_str(), "user.tag", "x", 1, 0), 0);
  ASSERT_TRUE(fs.CreateFolder(tree / "Pkg.app/Contents", 0755, true));
  WriteFile(tree / "Pkg.app/Contents/new", "inside");
  if (test::IsRoot()) {
    ASSERT_TRUE(fs.SetOwner(tree / "doc", test::kThrowawayUser, -1));
  }
  std::string stickPath = stick->Path();
  WriteFile(stickPath + "/doc", "old");
  ASSERT_TRUE(fs.CreateFolder(stickPath + "/Pkg.app/Contents", 0755, true));
  WriteFile(stickPath + "/Pkg.app/Contents/old", "inside");
  CopyOptions options;
  options.replaceExisting = true;
  for (const char* name : {"doc", "Pkg.app"}) {
    auto copied = fs.CopyItem(tree / name, stickPath + "/" + name, options);
    ASSERT_TRUE(copied) << copied.Error().Message();
  }
  EXPECT_EQ(ReadFile(stickPath + "/doc"), "new");
  EXPECT_EQ(ReadFile(stickPath + "/Pkg.app/Contents/new"), "inside");
  EXPECT_TRUE(fs.GetAttributes(stickPath + "/Pkg.app/Contents/old").Error().IsMissing());
  EXPECT_EQ(CountTemporaryItems(stickPath), 0);
}

}  // namespace
}  // namespace marigold
