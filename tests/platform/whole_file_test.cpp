// Whole files: the replacing write's modes, and what a read refuses. Its failures (nothing left
// behind, the target untouched) are exercised through the documents and the index that use it.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <optional>

#include "platform/linux_file_system.h"
#include "support/temp_folder.h"
#include "support/tree_values.h"

namespace marigold {
namespace {

mode_t ModeOf(const std::string& path) {
  struct stat info {};
  return ::stat(path.c_str(), &info) == 0 ? info.st_mode & 07777 : 0;
}

TEST(StartFileWrite, ReplacesTheFileWithTheModeAskedOrKept) {
  const struct { const char* name; std::optional<mode_t> old; std::optional<std::uint32_t> asked; mode_t after; } cases[] = {
      {"new file follows the umask", std::nullopt, std::nullopt, 0640},
      {"existing file keeps its mode", 0604, std::nullopt, 0604},
      {"a private file is made private", std::nullopt, 0700, 0700},
      {"an existing file becomes private", 0644, 0700, 0700},
  };
  LinuxFileSystem fs;
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    TempFolder folder;
    const std::string path = folder.Join("doc.mgy");
    if (c.old) ::chmod(folder.WriteFile("doc.mgy", "old").c_str(), *c.old);
    const mode_t mask = ::umask(027);
    auto writer = fs.StartFileWrite(path, c.asked);
    ::umask(mask);
    ASSERT_TRUE(writer);
    ASSERT_TRUE(writer.Value()->Write("new "));
    ASSERT_TRUE(writer.Value()->Write("contents"));
    ASSERT_TRUE(writer.Value()->Commit());
    EXPECT_EQ(trees::Read(folder.Path()), (trees::Tree{{"doc.mgy", "new contents"}}));
    EXPECT_EQ(ModeOf(path), c.after);
  }
}

TEST(StartFileWrite, AWriterDroppedUncommittedLeavesTheOldFile) {
  LinuxFileSystem fs;
  TempFolder folder;
  folder.WriteFile("doc.mgy", "old");
  {
    auto writer = fs.StartFileWrite(folder.Join("doc.mgy"), std::nullopt);
    ASSERT_TRUE(writer);
    ASSERT_TRUE(writer.Value()->Write("half"));
  }
  EXPECT_EQ(trees::Read(folder.Path()), (trees::Tree{{"doc.mgy", "old"}}));
}

TEST(ReadFile, GivesFilesAndRefusesEverythingElse) {
  TempFolder folder;
  const std::string big(std::size_t{3} << 20, 'b');  // large enough to be mapped
  folder.WriteFile("small", "little");
  folder.WriteFile("big", big);
  ASSERT_EQ(::symlink("small", folder.Join("link").c_str()), 0);
  ASSERT_EQ(::mkfifo(folder.Join("pipe").c_str(), 0600), 0);
  const struct { const char* name; std::uint64_t maxBytes; std::string bytes; int error; } cases[] = {
      {"small", 100, "little", 0},
      {"big", big.size(), big, 0},
      {"link", 100, "little", 0},
      {"small", 5, "", EFBIG},
      {"pipe", 100, "", EINVAL},
      {"", 100, "", EISDIR},
      {"missing", 100, "", ENOENT},
  };
  LinuxFileSystem fs;
  for (const auto& c : cases) {
    FsResult<FileBytes> read = fs.ReadFile(folder.Join(c.name), c.maxBytes);
    if (c.error != 0) {
      ASSERT_FALSE(read) << c.name;
      EXPECT_EQ(read.Error().code, c.error) << c.name;
    } else {
      ASSERT_TRUE(read) << c.name << ": " << read.Error().Message();
      EXPECT_TRUE(read.Value().View() == c.bytes) << c.name;
    }
  }
}

}  // namespace
}  // namespace marigold
