#include "test_trees.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>

namespace marigold::test {

namespace {

// Link values carry a marker no file content in a test uses.
constexpr std::string_view kLinkMarker = "\x01link->";

}  // namespace

std::string LinkTo(const std::string& target) { return std::string(kLinkMarker) + target; }

void BuildTree(const std::string& root, const Tree& tree) {
  std::filesystem::create_directories(root);
  for (const auto& [key, value] : tree) {
    const std::filesystem::path path = std::filesystem::path(root) / key;
    std::filesystem::create_directories(key.ends_with("/") ? path : path.parent_path());
    if (key.ends_with("/")) continue;
    if (value.starts_with(kLinkMarker))
      std::filesystem::create_symlink(value.substr(kLinkMarker.size()), path);
    else
      WriteFile(path, value);
  }
}

Tree ReadTree(const std::string& root) {
  namespace fs = std::filesystem;
  Tree out;
  std::error_code ec;
  for (auto it = fs::recursive_directory_iterator(root, ec); !ec && it != fs::recursive_directory_iterator();
       it.increment(ec)) {
    const std::string key = it->path().lexically_relative(root).string();
    if (it->is_symlink())
      out[key] = LinkTo(fs::read_symlink(it->path()).string());
    else if (it->is_directory())
      out[key + "/"] = kDir;
    else
      out[key] = ReadFile(it->path());
  }
  return out;
}

void WriteFile(const std::string& path, const std::string& content) {
  std::ofstream out(path, std::ios::binary | std::ios::trunc);
  if (!out) throw std::runtime_error("cannot write " + path);
  out.write(content.data(), static_cast<std::streamsize>(content.size()));
}

std::string ReadFile(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  if (!in) return "<missing>";
  std::ostringstream buffer;
  buffer << in.rdbuf();
  return buffer.str();
}

void SetMTime(const std::string& path, std::int64_t seconds, long nanoseconds) {
  struct timespec times[2] = {{seconds, nanoseconds}, {seconds, nanoseconds}};
  if (::utimensat(AT_FDCWD, path.c_str(), times, AT_SYMLINK_NOFOLLOW) != 0)
    throw std::runtime_error("utimensat " + path);
}

std::int64_t MTimeNs(const std::string& path) {
  struct stat info {};
  if (::lstat(path.c_str(), &info) != 0) return -1;
  return std::int64_t(info.st_mtim.tv_sec) * 1'000'000'000 + info.st_mtim.tv_nsec;
}

ino_t InodeOf(const std::string& path) {
  struct stat info {};
  return ::lstat(path.c_str(), &info) == 0 ? info.st_ino : 0;
}

mode_t ModeOf(const std::string& path) {
  struct stat info {};
  return ::lstat(path.c_str(), &info) == 0 ? (info.st_mode & 07777) : 0;
}

}  // namespace marigold::test
