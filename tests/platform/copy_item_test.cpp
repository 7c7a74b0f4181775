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
  // A new file fails the same way, unnamed or not, and leaves nothing under its name.
  for (bool refuseUnnamed : {false, true}) {
    CopyHints hints;
    hints.noUnnamedFiles = refuseUnnamed;
    CopyOptions fresh;
    fresh.hints = &hints;
    EXPECT_EQ(fs.CopyItem(tree / "big", volume->Path() + "/new", fresh).Error().code, ENOSPC);
    EXPECT_TRUE(fs.GetAttributes(volume->Path() + "/new").Error().IsMissing());
  }
  EXPECT_EQ(CountTemporaryItems(volume->Path()), 0);
  EXPECT_LE(fs.GetFreeSpace(volume->Path()).Value(), 2u << 20);
}

// A new file gets everything before it has a name, whether it is written unnamed or (where the
// volume refuses that) under a temporary name; a folder's default access list does not stick to
// a copy whose source has none.
TEST(CopyItem, NewFileArrivesCompleteWithOrWithoutAnUnnamedStart) {
  for (bool refuseUnnamed : {false, true}) {
    TempFolder tree;
    LinuxFileSystem fs;
    WriteFile(tree / "plain", "plain", 0640);
    WriteFile(tree / "listed", "listed", 0600);
    ASSERT_EQ(::lsetxattr((tree / "plain").c_str(), "user.tag", "t", 1, 0), 0);
    ASSERT_EQ(test::RunCommand("setfacl -m u:54321:r '" + tree / "listed" + "'"), 0);
    ASSERT_TRUE(fs.CreateFolder(tree / "dest", 0755, false));
    ASSERT_EQ(test::RunCommand("setfacl -d -m u:54321:rw '" + tree / "dest" + "'"), 0);
    CopyHints hints;
    hints.noUnnamedFiles = refuseUnnamed;
    CopyOptions options;
    options.hints = &hints;
    options.backupDate = 1234;
    for (const char* name : {"plain", "listed"}) {
      const std::string source = tree / name, copy = tree / "dest/" + name;
      ASSERT_TRUE(fs.SetTimes(source, {1'600'000'000, 123'456'789}, FileTime{1'500'000'000, 1}));
      ASSERT_TRUE(fs.CopyItem(source, copy, options)) << name;
      auto from = fs.GetAttributes(source).Value(), to = fs.GetAttributes(copy).Value();
      EXPECT_EQ(ReadFile(copy), name);
      EXPECT_EQ(to.mode, from.mode) << name;
      EXPECT_EQ(to.modificationTime, from.modificationTime) << name;
      EXPECT_EQ(to.accessTime, from.accessTime) << name;
      EXPECT_EQ(Xattr(copy, "user.tag"), Xattr(source, "user.tag")) << name;
      EXPECT_EQ(Acl(copy), Acl(source)) << name;
      EXPECT_EQ(fs.GetBackupDate(copy), 1234) << name;
    }
    EXPECT_EQ(CountTemporaryItems(tree / "dest"), 0);
    EXPECT_EQ(fs.CopyItem(tree / "plain", tree / "dest/plain", options).Error().code, EEXIST);
  }
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
  auto fresh = fs.CopyItem(tree / "doc", stickPath + "/fresh", {});  // no unnamed files here
  ASSERT_TRUE(fresh) << fresh.Error().Message();
  EXPECT_EQ(ReadFile(stickPath + "/fresh"), "new");
  EXPECT_EQ(ReadFile(stickPath + "/Pkg.app/Contents/new"), "inside");
  EXPECT_TRUE(fs.GetAttributes(stickPath + "/Pkg.app/Contents/old").Error().IsMissing());
  EXPECT_EQ(CountTemporaryItems(stickPath), 0);
}

}  // namespace
}  // namespace marigold
