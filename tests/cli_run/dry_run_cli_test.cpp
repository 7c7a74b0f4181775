// A dry run only looks: between two exact runs it must leave the folders, the home folder (the
// preferences, the template and the exact-sync index) and every date and attribute as they were.
#include <gtest/gtest.h>

#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <cstring>
#include <filesystem>
#include <map>

#include "support/cli_runner.h"
#include "support/tree_values.h"

namespace marigold::cli_testing {
namespace {

// Every item below `root` (the captured output files of the runner aside): its kind, content,
// modification time and extended attributes.
std::map<std::string, std::string> Snapshot(const std::string& root) {
  std::map<std::string, std::string> items;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(root)) {
    const std::string path = entry.path().string();
    const std::string relative = path.substr(root.size());
    if (relative == "/.in" || relative == "/.out" || relative == "/.err") continue;
    struct stat st {};
    ::lstat(path.c_str(), &st);
    std::string text = std::to_string(st.st_mode) + " " + std::to_string(st.st_mtim.tv_sec) + "." +
                       std::to_string(st.st_mtim.tv_nsec);
    if (S_ISREG(st.st_mode)) text += " " + ReadFileText(path);
    std::string names(4096, '\0');
    const ssize_t n = ::llistxattr(path.c_str(), names.data(), names.size());
    for (ssize_t i = 0; i < n; i += static_cast<ssize_t>(std::strlen(names.data() + i)) + 1) {
      std::string value(4096, '\0');
      const ssize_t length = ::lgetxattr(path.c_str(), names.data() + i, value.data(), value.size());
      text += std::string(" ") + (names.data() + i) + "=" + value.substr(0, length > 0 ? length : 0);
    }
    items[relative] = text;
  }
  return items;
}

TEST(DryRunCli, ChangesNothingAndKeepsTheExactIndex) {
  CliHome box;
  const std::string a = box.Path("A"), b = box.Path("B");
  trees::Build(a, {{"keep.txt", "k"}, {"gone.txt", "g"}});
  trees::Build(b, {});
  const std::vector<std::string> exact{"sync", "--exact", a, b};
  ASSERT_EQ(box.Run(exact).status, 0);
  // A temporary that a killed run left behind is the next real run's to remove, not a dry run's.
  trees::Write(a + "/.MGTempFile-0123456789abcdef", "half");

  const auto before = Snapshot(box.root());
  CliResult dry = box.Run({"sync", "--dry-run", a, b});
  ASSERT_EQ(dry.status, 0) << dry.out << dry.err;
  EXPECT_EQ(Snapshot(box.root()), before);

  // The index of the exact runs is still in force: a deletion on A crosses over.
  ASSERT_EQ(::unlink((a + "/gone.txt").c_str()), 0);
  ASSERT_EQ(box.Run(exact).status, 0);
  EXPECT_EQ(trees::Read(a), (trees::Tree{{"keep.txt", "k"}}));
  EXPECT_EQ(trees::Read(b), (trees::Tree{{"keep.txt", "k"}}));
}

}  // namespace
}  // namespace marigold::cli_testing
