// Refusals for a user without privileges: each operation reports EACCES or EPERM naming the item,
// and what the user may not change about ownership is quietly left as it is.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "platform/linux_file_system.h"
#include "support/platform_test_support.h"
#include "support/as_user.h"

namespace marigold {
namespace {

using test::TempFolder;
using test::WriteFile;

// Runs `operation` as the throwaway user; the answer is the errno of its error, 0 for success,
// 200 when the error names another path than `expectedPath`, or -1 when the child failed.
int ErrnoAsUser(const std::function<FsStatus(FileSystem&)>& operation, const std::string& expectedPath) {
  const std::string answer = OutputAsUser(test::kThrowawayUser, [&] {
    LinuxFileSystem fs;
    FsStatus status = operation(fs);
    return std::to_string(status ? 0 : status.Error().path == expectedPath ? status.Error().code : 200);
  });
  return answer.find('<') == std::string::npos ? std::stoi(answer) : -1;
}

TEST(Access, RefusalsForAnUnprivilegedUser) {
  if (!test::IsRoot()) GTEST_SKIP() << "needs root to become another user";
  TempFolder tree;
  LinuxFileSystem fs;
  ASSERT_TRUE(fs.CreateFolder(tree / "closed", 0700, false));
  ASSERT_TRUE(fs.CreateFolder(tree / "readonly", 0755, false));
  ASSERT_TRUE(fs.CreateFolder(tree / "mine", 0755, false));
  ASSERT_TRUE(fs.SetOwner(tree / "mine", test::kThrowawayUser, test::kThrowawayUser));
  WriteFile(tree / "secret", "s", 0600);
  WriteFile(tree / "public", "p", 0644);
  WriteFile(tree / "readonly/item", "i", 0666);

  struct Case { const char* what; std::function<FsStatus(FileSystem&)> operation; std::string path; int error; };
  auto asStatus = [](auto result) { return result ? FsStatus::Success() : FsStatus(result.Error()); };
  std::vector<Case> cases = {
      {"list a closed folder", [&](FileSystem& f) { return asStatus(f.ListFolder(tree / "closed")); }, tree / "closed", EACCES},
      {"read a private file", [&](FileSystem& f) { return asStatus(f.CopyItem(tree / "secret", tree / "mine/s", {})); }, tree / "secret", EACCES},
      {"write into another's folder", [&](FileSystem& f) { return asStatus(f.CopyItem(tree / "public", tree / "readonly/p", {})); }, tree / "readonly/p", EACCES},
      {"delete from another's folder", [&](FileSystem& f) { return f.RemoveItem(tree / "readonly/item"); }, tree / "readonly/item", EACCES},
      {"check writing", [&](FileSystem& f) { return f.CheckAccess(tree / "readonly", kAccessWrite); }, tree / "readonly", EACCES},
      {"lock", [&](FileSystem& f) { return f.SetLocked(tree / "mine", true); }, tree / "mine", EPERM},
      {"give away", [&](FileSystem& f) { return f.SetOwner(tree / "mine", 0, -1); }, tree / "mine", EPERM},
  };
  for (const Case& c : cases) EXPECT_EQ(ErrnoAsUser(c.operation, c.path), c.error) << c.what;
  EXPECT_EQ(test::CountTemporaryItems(tree / "readonly"), 0);
}

TEST(Access, CopyKeepsTheCopiersOwnershipWhenItMayNotGiveItAway) {
  if (!test::IsRoot()) GTEST_SKIP() << "needs root to become another user";
  TempFolder tree;
  LinuxFileSystem fs;
  ASSERT_TRUE(fs.CreateFolder(tree / "mine", 0755, false));
  ASSERT_TRUE(fs.SetOwner(tree / "mine", test::kThrowawayUser, test::kThrowawayUser));
  WriteFile(tree / "roots", "r", 0644);
  EXPECT_EQ(ErrnoAsUser([&](FileSystem& f) {
              auto r = f.CopyItem(tree / "roots", tree / "mine/copy", {});
              return r ? FsStatus::Success() : FsStatus(r.Error());
            }, tree / "mine/copy"), 0);
  auto copy = fs.GetAttributes(tree / "mine/copy").Value();
  EXPECT_EQ(copy.uid, test::kThrowawayUser);
  EXPECT_EQ(copy.mode, 0644u);
}

// The old package goes away whole even where its owner had made its folders read-only.
TEST(Access, OwnerReplacesAReadOnlyPackage) {
  if (!test::IsRoot()) GTEST_SKIP() << "needs root to become another user";
  TempFolder tree;
  LinuxFileSystem fs;
  for (const char* side : {"a", "b"}) {
    ASSERT_TRUE(fs.CreateFolder(tree / side + "/Pkg.app/Contents", 0755, true));
    WriteFile(tree / side + "/Pkg.app/Contents/" + side, side);
    ASSERT_EQ(test::RunCommand("chown -R 54321:54321 '" + tree / side + "' && chmod 0555 '" +
                               tree / side + "/Pkg.app/Contents'"), 0);
  }
  CopyOptions options;
  options.replaceExisting = true;
  EXPECT_EQ(ErrnoAsUser([&](FileSystem& f) {
              auto r = f.CopyItem(tree / "a/Pkg.app", tree / "b/Pkg.app", options);
              return r ? FsStatus::Success() : FsStatus(r.Error());
            }, ""), 0);
  EXPECT_EQ(test::ReadFile(tree / "b/Pkg.app/Contents/a"), "a");
  EXPECT_TRUE(fs.GetAttributes(tree / "b/Pkg.app/Contents/b").Error().IsMissing());
  EXPECT_EQ(test::CountTemporaryItems(tree / "b"), 0);
}

}  // namespace
}  // namespace marigold
