#include "support/temp_folder.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <vector>

#include "platform/linux_file_system.h"
#include "platform/tree_walk.h"

namespace marigold {

namespace fs = std::filesystem;

TempFolder::TempFolder(const std::string& parent) {
  std::string pattern = ((parent.empty() ? fs::temp_directory_path() : fs::path(parent)) / "marigold-test-XXXXXX").string();
  std::vector<char> buffer(pattern.begin(), pattern.end());
  buffer.push_back('\0');
  if (mkdtemp(buffer.data()) == nullptr) throw std::runtime_error("mkdtemp failed");
  mPath = buffer.data();
  ::chmod(mPath.c_str(), 0755);  // reachable by a throwaway user
}

TempFolder::~TempFolder() {
  if (::geteuid() == 0) {
    LinuxFileSystem locks;
    WalkTree(locks, mPath, {.visit = [&](const WalkItem& item) {
               if (item.entry.attributes.isLocked) locks.SetLocked(item.path, false);
               return WalkAction::kContinue;
             }});
  }
  std::error_code ec;
  // Make every folder writable again so tests that lock parts of the tree still clean up.
  for (auto it = fs::recursive_directory_iterator(
           mPath, fs::directory_options::skip_permission_denied, ec);
       !ec && it != fs::recursive_directory_iterator(); it.increment(ec)) {
    std::error_code ignored;
    if (it->is_directory(ignored) && !it->is_symlink(ignored)) {
      fs::permissions(it->path(), fs::perms::owner_all, fs::perm_options::add, ignored);
    }
  }
  fs::permissions(mPath, fs::perms::owner_all, fs::perm_options::add, ec);
  fs::remove_all(mPath, ec);
}

std::string TempFolder::WriteFile(const std::string& relative, const std::string& contents) const {
  const fs::path full = fs::path(mPath) / relative;
  fs::create_directories(full.parent_path());
  std::ofstream out(full, std::ios::binary | std::ios::trunc);
  out.write(contents.data(), static_cast<std::streamsize>(contents.size()));
  return full.string();
}

std::string TempFolder::ReadFile(const std::string& pathOrRelative) const {
  const fs::path full = pathOrRelative.starts_with("/") ? fs::path(pathOrRelative)
                                                        : fs::path(mPath) / pathOrRelative;
  std::ifstream in(full, std::ios::binary);
  if (!in) return "";
  std::ostringstream buffer;
  buffer << in.rdbuf();
  return buffer.str();
}

}  // namespace marigold
