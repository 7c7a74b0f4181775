// A package is deleted whole; a locked item inside it is opened first when the session handles
// locked items, and keeps the package otherwise.
#include <gtest/gtest.h>

#include <unistd.h>

#include "support/cli_runner.h"
#include "platform/linux_file_system.h"
#include "support/tree_values.h"

namespace marigold::cli_testing {
namespace {

using trees::Tree;

class LockedPackage : public ::testing::TestWithParam<bool> {};

TEST_P(LockedPackage, IsDeletedOnlyWhenLockedItemsAreHandled) {
  if (::geteuid() != 0) GTEST_SKIP() << "only root can lock items";
  const bool handled = GetParam();
  CliHome box;
  const std::string a = box.Path("A");
  const std::string b = box.Path("B");
  trees::Build(a, {{"keep.txt", "k"}});
  trees::Build(b, {{"keep.txt", "k"}, {"Old.app/", ""}, {"Old.app/Contents/", ""}, {"Old.app/Contents/bin", "x"}});
  LinuxFileSystem fs;
  if (!fs.SetLocked(b + "/Old.app/Contents/bin", true)) GTEST_SKIP() << "this file system keeps no immutable flag";

  const CliResult result = box.Run({"sync", "--backup", "--exact", "--set",
                                    std::string("settLockedItems=") + (handled ? "1" : "0"), a, b});
  fs.SetLocked(b + "/Old.app/Contents/bin", false);

  if (handled) {
    EXPECT_EQ(result.status, 0) << result.out << result.err;
    EXPECT_EQ(trees::Read(b), (Tree{{"keep.txt", "k"}}));
  } else {
    EXPECT_EQ(result.status, 1) << result.out << result.err;
    EXPECT_EQ(trees::Read(b).count("Old.app/Contents/bin"), 1u);
  }
}

INSTANTIATE_TEST_SUITE_P(ExactBackup, LockedPackage, ::testing::Bool());

}  // namespace
}  // namespace marigold::cli_testing
