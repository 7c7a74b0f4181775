// A copy must keep everything a user can see: a tree holding every kind of item is copied the
// way the engine copies (folders made, items copied, folder metadata set after their content),
// then rsync, which compares content, modes, owners, times, links, devices, extended attributes
// and access lists, must find nothing to change.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <map>

#include "platform/linux_file_system.h"
#include "platform/tree_walk.h"
#include "support/platform_test_support.h"

namespace marigold {
namespace {

using test::RunCommand;
using test::WriteFile;

void Shell(const std::string& command) { ASSERT_EQ(RunCommand(command), 0) << command; }

void BuildEveryKindOfItem(const std::string& root) {
  LinuxFileSystem fs;
  for (const char* folder : {"nested/deeper/deepest", "empty", "private", "readonly", "shared",
                             "Tool.app/Contents/Resources", "\xff\xfe-raw-folder"})
    ASSERT_TRUE(fs.CreateFolder(root + "/" + folder, 0755, true));
  WriteFile(root + "/plain.txt", "plain\n");
  WriteFile(root + "/.hidden", "hidden\n");
  WriteFile(root + "/nested/.config", "config\n");
  WriteFile(root + "/nested/deeper/deepest/leaf", "leaf\n");
  WriteFile(root + "/caf\xe9-latin1.txt", "latin1 name\n");
  WriteFile(root + "/\xff\xfe-raw-folder/inside", "raw\n");
  WriteFile(root + "/readonly/frozen", "frozen\n", 0444);
  WriteFile(root + "/private/secret", "secret\n", 0600);
  WriteFile(root + "/setuid-tool", "#!/bin/sh\n", 04755);
  WriteFile(root + "/Tool.app/Contents/Info", "package\n");
  WriteFile(root + "/Tool.app/Contents/Resources/icon", "icon\n", 0444);
  Shell("head -c 6000000 /dev/urandom > '" + root + "/large.bin'");
  Shell("truncate -s 40M '" + root + "/sparse.img' && printf data | dd of='" + root +
        "/sparse.img' bs=1 seek=20000000 conv=notrunc status=none");
  Shell("ln -s plain.txt '" + root + "/link-to-file'");
  Shell("ln -s nested '" + root + "/link-to-folder'");
  Shell("ln -s nowhere/at/all '" + root + "/dangling'");
  Shell("mkfifo '" + root + "/pipe'");
  Shell("setfattr -n user.color -v blue '" + root + "/plain.txt'");
  Shell("setfattr -n user.binary -v 0x00ff10 '" + root + "/nested'");
  Shell("setfacl -m u:54321:rw,g:54321:r '" + root + "/plain.txt'");
  Shell("setfacl -m u:54321:rwx -d -m u:54321:rx '" + root + "/shared'");
  WriteFile(root + "/shared/inherited", "inherits the default list\n");
  if (test::IsRoot()) {
    Shell("mknod '" + root + "/null-device' c 1 3");
    Shell("chown -h 54321:54321 '" + root + "/private/secret' '" + root + "/dangling'");
  }
  Shell("chmod 0700 '" + root + "/private'");
  Shell("chmod 0555 '" + root + "/readonly' '" + root + "/Tool.app/Contents'");
  // Old dates, links included, folders last so that writing into them does not move them.
  Shell("cd '" + root + "' && find . -depth -exec touch -h -d '1975-03-04 05:06:07.123456789' {} +");
  Shell("touch -h -d '2001-09-09 01:46:40.5' '" + root + "/link-to-file' '" + root + "/nested'");
}

// Copies `source` into the empty folder `dest` with the platform's calls.
void CopyTree(FileSystem& fs, const std::string& source, const std::string& dest) {
  auto target = [&](const WalkItem& item) { return dest + "/" + item.relativePath; };
  FsStatus walked = WalkTree(fs, source, {
      .visit = [&](const WalkItem& item) {
        if (item.entry.attributes.IsReallyFolder()) {
          EXPECT_TRUE(fs.CreateFolder(target(item), 0700, false)) << item.path;
          return WalkAction::kContinue;
        }
        auto copied = fs.CopyItem(item.path, target(item), {});
        EXPECT_TRUE(copied) << (copied ? "" : copied.Error().Message());
        return WalkAction::kSkipChildren;
      },
      .leave = [&](const WalkItem& item) {
        EXPECT_TRUE(fs.CopyMetadata(item.path, target(item))) << item.path;
      }});
  ASSERT_TRUE(walked) << walked.Error().Message();
  ASSERT_TRUE(fs.CopyMetadata(source, dest));
}

// What rsync does not compare to the nanosecond: kind, times and the locked flag of each item.
std::map<std::string, std::string> Describe(FileSystem& fs, const std::string& root) {
  std::map<std::string, std::string> items;
  WalkTree(fs, root, {.visit = [&](const WalkItem& item) {
             const ItemAttributes& a = item.entry.attributes;
             items[item.relativePath] = std::to_string(static_cast<int>(a.kind)) + " " +
                                        std::to_string(a.modificationTime.seconds) + "." +
                                        std::to_string(a.modificationTime.nanoseconds) + " " +
                                        std::to_string(a.mode) + " " + std::to_string(a.size);
             return WalkAction::kContinue;
           }});
  return items;
}

class Fidelity : public ::testing::TestWithParam<const char*> {};

TEST_P(Fidelity, CopiedTreeIsIdentical) {
  std::string volumeType = GetParam();
  std::unique_ptr<test::TestVolume> volume;
  std::string base = "/tmp";
  if (volumeType != "tmp") {
    std::string whyNot;
    volume = test::TestVolume::Make(volumeType, volumeType == "xfs" ? 320 : 256, &whyNot);
    if (!volume) GTEST_SKIP() << whyNot;
    base = volume->Path();
  }
  test::TempFolder source(base), dest(base);
  ASSERT_NO_FATAL_FAILURE(BuildEveryKindOfItem(source.Path()));
  LinuxFileSystem fs;
  ASSERT_NO_FATAL_FAILURE(CopyTree(fs, source.Path(), dest.Path()));

  std::string changes;
  ASSERT_EQ(RunCommand("rsync -aAX --dry-run --itemize-changes --checksum '" + source.Path() + "/' '" +
                       dest.Path() + "/' 2>&1", &changes), 0) << changes;
  EXPECT_EQ(changes, "");
  EXPECT_EQ(Describe(fs, dest.Path()), Describe(fs, source.Path()));
  EXPECT_LT(fs.GetAttributes(dest / "sparse.img").Value().allocatedBytes, 4u << 20);
}

INSTANTIATE_TEST_SUITE_P(Volumes, Fidelity, ::testing::Values("tmp", "ext4", "xfs", "btrfs"),
                         [](const auto& info) { return std::string(info.param); });

// The fastest way available is taken: shared extents where the volume has them, the kernel's
// copy within one volume, reading and writing across volumes.
TEST(CopyMethods, CloneWhereTheVolumeSharesExtents) {
  if (!test::IsRoot()) GTEST_SKIP() << "mounting and locking need root";
  struct Case { const char* type; int sizeMiB; CopyMethod within; };
  for (const Case& c : {Case{"ext4", 64, CopyMethod::kCopyRange}, Case{"xfs", 320, CopyMethod::kClone},
                        Case{"btrfs", 256, CopyMethod::kClone}}) {
    std::string whyNot;
    auto volume = test::TestVolume::Make(c.type, c.sizeMiB, &whyNot);
    if (!volume) GTEST_SKIP() << whyNot;
    LinuxFileSystem fs;
    std::string original = volume->Path() + "/original";
    WriteFile(original, std::string(1 << 20, 'r'));
    auto within = fs.CopyItem(original, volume->Path() + "/copy", {});
    ASSERT_TRUE(within) << c.type;
    EXPECT_EQ(within.Value().method, c.within) << c.type;
    test::TempFolder elsewhere;
    auto across = fs.CopyItem(original, elsewhere / "copy", {});
    ASSERT_TRUE(across) << c.type;
    EXPECT_EQ(across.Value().method, CopyMethod::kReadWrite) << c.type;
    EXPECT_EQ(test::ReadFile(elsewhere / "copy"), std::string(1 << 20, 'r')) << c.type;
    Shell("truncate -s 30M '" + original + "' && echo tail >> '" + original + "'");
    CopyOptions replace;
    replace.replaceExisting = true;
    ASSERT_TRUE(fs.CopyItem(original, elsewhere / "copy", replace)) << c.type;
    EXPECT_LT(fs.GetAttributes(elsewhere / "copy").Value().allocatedBytes, 4u << 20) << c.type;  // holes kept
    // The same volumes keep birth times and the locked flag, read in the same single call.
    EXPECT_TRUE(fs.GetAttributes(original).Value().creationTime.has_value()) << c.type;
    ASSERT_TRUE(fs.SetLocked(original, true)) << c.type;
    EXPECT_TRUE(fs.GetAttributes(original).Value().isLocked) << c.type;
    ASSERT_TRUE(fs.SetLocked(original, false)) << c.type;
    EXPECT_FALSE(fs.GetAttributes(original).Value().isLocked) << c.type;
  }
}

}  // namespace
}  // namespace marigold
