#include "support/tree_values.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/xattr.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>

namespace marigold::trees {
namespace {

namespace fs = std::filesystem;

constexpr const char* kBackupAttribute = "user.marigold.backupdate";
constexpr std::string_view kLinkMarker = "-> ";

std::string DateText(const fs::path& path) {
  const std::int64_t ns = MTimeNs(path.string());
  if (ns < 0) return "missing";
  auto backup = BackupDate(path.string());
  return std::to_string(ns) + "/" + (backup ? std::to_string(*backup) : "-");
}

}  // namespace

std::string LinkTo(const std::string& target) { return std::string(kLinkMarker) + target; }

void Write(const std::string& path, const std::string& content) {
  std::ofstream out(path, std::ios::binary | std::ios::trunc);
  out.write(content.data(), static_cast<std::streamsize>(content.size()));
  if (!out) throw std::runtime_error("cannot write " + path);
}

std::string ReadFile(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  if (!in) return "<missing>";
  std::ostringstream buffer;
  buffer << in.rdbuf();
  return buffer.str();
}

void Build(const std::string& root, const Tree& tree) {
  fs::create_directories(root);
  for (const auto& [relative, content] : tree) {
    const fs::path full = fs::path(root) / relative;
    fs::create_directories(relative.ends_with("/") ? full : full.parent_path());
    if (relative.ends_with("/")) continue;
    if (content.starts_with(kLinkMarker))
      fs::create_symlink(content.substr(kLinkMarker.size()), full);
    else
      Write(full.string(), content);
  }
}

Tree Read(const std::string& root) {
  Tree tree;
  std::error_code ec;
  for (auto it = fs::recursive_directory_iterator(root, ec); !ec && it != fs::recursive_directory_iterator();
       it.increment(ec)) {
    const std::string relative = it->path().lexically_relative(root).string();
    if (it->is_symlink())
      tree[relative] = LinkTo(fs::read_symlink(it->path()).string());
    else if (it->is_directory())
      tree[relative + "/"] = kDir;
    else
      tree[relative] = ReadFile(it->path());
  }
  return tree;
}

std::map<std::string, std::string> Dates(const std::string& root) {
  std::map<std::string, std::string> dates;
  dates["."] = DateText(root);
  std::error_code ec;
  for (auto it = fs::recursive_directory_iterator(root, ec); !ec && it != fs::recursive_directory_iterator();
       it.increment(ec)) {
    dates[it->path().lexically_relative(root).string()] = DateText(it->path());
  }
  return dates;
}

void SetModified(const std::string& path, std::int64_t seconds, long nanoseconds) {
  const struct timespec times[2] = {{static_cast<time_t>(seconds), nanoseconds},
                                    {static_cast<time_t>(seconds), nanoseconds}};
  if (::utimensat(AT_FDCWD, path.c_str(), times, AT_SYMLINK_NOFOLLOW) != 0) {
    throw std::runtime_error("cannot set the time of " + path);
  }
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

std::optional<std::int64_t> BackupDate(const std::string& path) {
  char buffer[64] = {};
  const ssize_t size = ::lgetxattr(path.c_str(), kBackupAttribute, buffer, sizeof buffer - 1);
  if (size <= 0) return std::nullopt;
  return std::stoll(std::string(buffer, static_cast<std::size_t>(size)));
}

}  // namespace marigold::trees
