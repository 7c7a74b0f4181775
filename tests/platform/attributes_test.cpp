// Reading items on a real disk: kinds, listings, and paths longer than PATH_MAX. Setting times,
// modes, owners and the locked flag is checked where copies and runs use them.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <limits.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <sys/un.h>
#include <unistd.h>

#include "platform/linux_file_system.h"
#include "platform/tree_walk.h"
#include "support/platform_test_support.h"

namespace marigold {
namespace {

using test::TempFolder;
using test::WriteFile;

std::vector<std::string> Names(const std::vector<FolderEntry>& entries) {
  std::vector<std::string> names;
  for (const FolderEntry& entry : entries) names.push_back(entry.name);
  return names;
}

TEST(Attributes, EveryKindIsReportedWithoutFollowingLinks) {
  TempFolder tree;
  LinuxFileSystem fs;
  WriteFile(tree / "file", "12345");
  ASSERT_EQ(::mkdir((tree / "Tool.app").c_str(), 0755), 0);
  ASSERT_EQ(::symlink("file", (tree / "link").c_str()), 0);
  ASSERT_EQ(::symlink("nowhere", (tree / "dangling").c_str()), 0);
  ASSERT_EQ(::mkfifo((tree / "fifo").c_str(), 0600), 0);
  int sock = ::socket(AF_UNIX, SOCK_STREAM, 0);
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  std::string socketPath = tree / "sock";
  ASSERT_LT(socketPath.size(), sizeof address.sun_path);
  socketPath.copy(address.sun_path, socketPath.size());
  ASSERT_EQ(::bind(sock, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
  ::close(sock);
  bool devices = test::IsRoot() && ::mknod((tree / "null").c_str(), S_IFCHR | 0600, makedev(1, 3)) == 0 &&
                 ::mknod((tree / "block").c_str(), S_IFBLK | 0600, makedev(7, 200)) == 0;

  struct Case { const char* name; ItemKind kind; };
  std::vector<Case> cases = {{"file", ItemKind::kFile},   {"Tool.app", ItemKind::kFolder},
                             {"link", ItemKind::kSymlink}, {"dangling", ItemKind::kSymlink},
                             {"fifo", ItemKind::kFifo},    {"sock", ItemKind::kSocket}};
  if (devices) {
    cases.push_back({"null", ItemKind::kCharDevice});
    cases.push_back({"block", ItemKind::kBlockDevice});
  }
  for (const Case& c : cases) {
    auto attributes = fs.GetAttributes(tree / c.name);
    ASSERT_TRUE(attributes) << c.name << ": " << attributes.Error().Message();
    EXPECT_EQ(attributes.Value().kind, c.kind) << c.name;
  }
  EXPECT_EQ(fs.GetAttributes(tree / "link").Value().size, 4u);  // the target's text, not the file
  EXPECT_TRUE(fs.GetAttributes(tree / "Tool.app").Value().isPackage);
  EXPECT_FALSE(fs.GetAttributes(tree / "Tool.app").Value().IsReallyFolder());
  if (devices) {
    EXPECT_EQ(fs.GetAttributes(tree / "null").Value().specialDevice, makedev(1, 3));
  }

  auto missing = fs.GetAttributes(tree / "none");
  ASSERT_FALSE(missing);
  EXPECT_TRUE(missing.Error().IsMissing());
  EXPECT_EQ(missing.Error().path, tree / "none");
}

TEST(Listing, SortedRawNamesWithAttributes) {
  TempFolder tree;
  LinuxFileSystem fs;
  for (const char* name : {"b", "B", "a", "\xff\xfe-latin1", ".dot", "Caf\xc3\xa9"}) WriteFile(tree / name, name);
  ASSERT_EQ(::mkdir((tree / "Sub").c_str(), 0755), 0);
  auto listing = fs.ListFolder(tree.Path());
  ASSERT_TRUE(listing);
  EXPECT_EQ(Names(listing.Value()),
            (std::vector<std::string>{".dot", "a", "B", "b", "Caf\xc3\xa9", "Sub", "\xff\xfe-latin1"}));
  EXPECT_EQ(listing.Value()[0].attributes.size, 4u);
  EXPECT_TRUE(listing.Value()[0].attributes.isInvisible);
  EXPECT_EQ(listing.Value()[5].attributes.kind, ItemKind::kFolder);
  EXPECT_EQ(fs.ListFolder(tree / "a").Error().code, ENOTDIR);
}

TEST(Listing, WalkVisitsInOrderAndLeavesFoldersAfterTheirItems) {
  TempFolder tree;
  LinuxFileSystem fs;
  ASSERT_EQ(::mkdir((tree / "d").c_str(), 0755), 0);
  ASSERT_EQ(::mkdir((tree / "d/e").c_str(), 0755), 0);
  ASSERT_EQ(::mkdir((tree / "skip").c_str(), 0755), 0);
  WriteFile(tree / "d/e/f", "");
  WriteFile(tree / "skip/hidden", "");
  WriteFile(tree / "z", "");
  std::vector<std::string> seen;
  FsStatus walked = WalkTree(fs, tree.Path(), {
      .visit = [&](const WalkItem& item) {
        seen.push_back(item.relativePath + "@" + std::to_string(item.depth));
        EXPECT_EQ(item.path, tree / item.relativePath);
        return item.entry.name == "skip" ? WalkAction::kSkipChildren : WalkAction::kContinue;
      },
      .leave = [&](const WalkItem& item) { seen.push_back("/" + item.relativePath); }});
  ASSERT_TRUE(walked);
  EXPECT_EQ(seen, (std::vector<std::string>{"d@1", "d/e@2", "d/e/f@3", "/d/e", "/d", "skip@1", "z@1"}));
}

// Everything is reached through open folders, so depth and length are no limit.
TEST(LongPaths, EveryOperationWorksBeyondPathMax) {
  TempFolder tree;
  LinuxFileSystem fs;
  std::string deep = tree.Path();
  const std::string segment(200, 'd');
  while (deep.size() < PATH_MAX + 1000) {
    deep += "/" + segment;
    ASSERT_TRUE(fs.CreateFolder(deep, 0755, false)) << deep.size();
  }
  ASSERT_GT(deep.size(), static_cast<std::size_t>(PATH_MAX));
  ASSERT_TRUE(fs.CreateFolder(deep + "/x/y", 0755, true));
  std::string source = tree / "source.txt";
  WriteFile(source, "long way down");
  std::string copy = deep + "/copy.txt";
  ASSERT_TRUE(fs.CopyItem(source, copy, {}));
  EXPECT_EQ(fs.GetAttributes(copy).Value().size, 13u);
  ASSERT_TRUE(fs.SetBackupDate(copy, 1700000000));
  EXPECT_EQ(fs.GetBackupDate(copy), 1700000000);
  ASSERT_TRUE(fs.SetTimes(copy, {1000, 0}, std::nullopt));
  ASSERT_TRUE(fs.Rename(copy, deep + "/x/renamed.txt", false));
  EXPECT_EQ(Names(fs.ListFolder(deep).Value()), (std::vector<std::string>{"x"}));
  EXPECT_EQ(fs.GetAttributes(deep + "/x/renamed.txt").Value().modificationTime.seconds, 1000);
  EXPECT_TRUE(fs.CopyItem(deep + "/x/renamed.txt", tree / "back.txt", {}));
  EXPECT_EQ(test::ReadFile(tree / "back.txt"), "long way down");
  EXPECT_TRUE(fs.CheckAccess(deep + "/x", kAccessWrite));
  EXPECT_TRUE(fs.GetFreeSpace(deep));
  EXPECT_EQ(fs.MoveToTrash(deep).Error().problem, FsProblem::kCannotTrash);
  EXPECT_TRUE(fs.RemoveItem(deep + "/x/y"));
  EXPECT_TRUE(fs.RemoveTree(tree / segment));
  EXPECT_TRUE(fs.GetAttributes(tree / segment).Error().IsMissing());
}

TEST(FolderOperations, RefusalsCarryTheErrno) {
  TempFolder tree;
  LinuxFileSystem fs;
  WriteFile(tree / "a", "a");
  WriteFile(tree / "b", "b");
  ASSERT_TRUE(fs.CreateFolder(tree / "full", 0755, false));
  WriteFile(tree / "full/item", "");
  EXPECT_EQ(fs.CreateFolder(tree / "full", 0755, false).Error().code, EEXIST);
  EXPECT_TRUE(fs.CreateFolder(tree / "full", 0755, true));
  EXPECT_EQ(fs.CreateFolder(tree / "a/x", 0755, true).Error().code, ENOTDIR);
  EXPECT_EQ(fs.RemoveItem(tree / "full").Error().code, ENOTEMPTY);
  auto refused = fs.Rename(tree / "a", tree / "b", false);
  EXPECT_EQ(refused.Error().code, EEXIST);
  EXPECT_EQ(test::ReadFile(tree / "b"), "b");
  EXPECT_TRUE(fs.Rename(tree / "a", tree / "b", true));
  EXPECT_EQ(test::ReadFile(tree / "b"), "a");
  EXPECT_EQ(fs.ReadLink(tree / "b").Error().code, EINVAL);
}

}  // namespace
}  // namespace marigold
