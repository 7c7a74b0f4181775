#include "test_trees.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <vector>

namespace marigold::test {

namespace {

// Link values carry a marker no file content in a test uses.
constexpr std::string_view kLinkMarker = "\x01link->";

void MakeFolders(const std::string& path) {
  for (std::size_t slash = path.find('/', 1); ; slash = path.find('/', slash + 1)) {
    std::string prefix = path.substr(0, slash);
    if (::mkdir(prefix.c_str(), 0755) != 0 && errno != EEXIST) throw std::runtime_error("mkdir " + prefix);
    if (slash == std::string::npos) break;
  }
}

void ReadInto(const std::string& root, const std::string& relative, Tree& out) {
  const std::string folder = relative.empty() ? root : root + "/" + relative;
  DIR* dir = ::opendir(folder.c_str());
  if (dir == nullptr) return;
  std::vector<std::string> names;
  while (dirent* entry = ::readdir(dir)) {
    std::string name = entry->d_name;
    if (name != "." && name != "..") names.push_back(name);
  }
  ::closedir(dir);
  for (const std::string& name : names) {
    const std::string key = relative.empty() ? name : relative + "/" + name;
    const std::string full = root + "/" + key;
    struct stat info {};
    if (::lstat(full.c_str(), &info) != 0) continue;
    if (S_ISDIR(info.st_mode)) {
      out[key + "/"] = kDir;
      ReadInto(root, key, out);
    } else if (S_ISLNK(info.st_mode)) {
      std::string target(4096, '\0');
      ssize_t n = ::readlink(full.c_str(), target.data(), target.size());
      target.resize(n < 0 ? 0 : static_cast<std::size_t>(n));
      out[key] = LinkTo(target);
    } else {
      out[key] = ReadFile(full);
    }
  }
}

}  // namespace

std::string LinkTo(const std::string& target) { return std::string(kLinkMarker) + target; }

void BuildTree(const std::string& root, const Tree& tree) {
  MakeFolders(root);
  for (const auto& [key, value] : tree) {  // a map lists a folder before what it holds
    const std::string path = root + "/" + key;
    if (key.ends_with("/")) {
      MakeFolders(path.substr(0, path.size() - 1));
      continue;
    }
    MakeFolders(path.substr(0, path.rfind('/')));
    if (value.starts_with(kLinkMarker)) {
      if (::symlink(value.substr(kLinkMarker.size()).c_str(), path.c_str()) != 0)
        throw std::runtime_error("symlink " + path);
    } else {
      WriteFile(path, value);
    }
  }
}

Tree ReadTree(const std::string& root) {
  Tree out;
  ReadInto(root, "", out);
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
