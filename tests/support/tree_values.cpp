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

std::string DateText(const fs::path& path) {
  struct stat st {};
  if (::lstat(path.c_str(), &st) != 0) return "missing";
  const std::int64_t ns = static_cast<std::int64_t>(st.st_mtim.tv_sec) * 1000000000 + st.st_mtim.tv_nsec;
  auto backup = BackupDate(path.string());
  return std::to_string(ns) + "/" + (backup ? std::to_string(*backup) : "-");
}

}  // namespace

void Write(const std::string& path, const std::string& content) {
  std::ofstream out(path, std::ios::binary | std::ios::trunc);
  out << content;
  if (!out) throw std::runtime_error("cannot write " + path);
}

void Build(const std::string& root, const Tree& tree) {
  fs::create_directories(root);
  for (const auto& [relative, content] : tree) {
    const fs::path full = fs::path(root) / relative;
    if (!relative.empty() && relative.back() == '/') {
      fs::create_directories(full);
      continue;
    }
    fs::create_directories(full.parent_path());
    Write(full.string(), content);
  }
}

Tree Read(const std::string& root) {
  Tree tree;
  std::error_code ec;
  if (!fs::exists(fs::symlink_status(root, ec))) return tree;
  for (auto it = fs::recursive_directory_iterator(root, ec); !ec && it != fs::recursive_directory_iterator();
       it.increment(ec)) {
    const std::string relative = it->path().lexically_relative(root).string();
    if (it->is_symlink()) {
      tree[relative] = "-> " + fs::read_symlink(it->path()).string();
    } else if (it->is_directory()) {
      tree[relative + "/"] = "";
    } else {
      std::ifstream in(it->path(), std::ios::binary);
      std::ostringstream content;
      content << in.rdbuf();
      tree[relative] = content.str();
    }
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

void SetModified(const std::string& path, std::int64_t seconds) {
  const struct timespec times[2] = {{static_cast<time_t>(seconds), 0}, {static_cast<time_t>(seconds), 0}};
  if (::utimensat(AT_FDCWD, path.c_str(), times, AT_SYMLINK_NOFOLLOW) != 0) {
    throw std::runtime_error("cannot set the time of " + path);
  }
}

std::optional<std::int64_t> BackupDate(const std::string& path) {
  char buffer[64] = {};
  const ssize_t size = ::lgetxattr(path.c_str(), kBackupAttribute, buffer, sizeof buffer - 1);
  if (size <= 0) return std::nullopt;
  return std::stoll(std::string(buffer, static_cast<std::size_t>(size)));
}

}  // namespace marigold::trees
