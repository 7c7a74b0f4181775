// Reading items: attributes, folder listings, links, access checks.
#include <dirent.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <memory>

#include "platform/item_names.h"
#include "platform/linux_file_system.h"
#include "platform/linux_paths.h"

namespace marigold {

using linux_detail::AtPath;
using linux_detail::ErrnoError;
using linux_detail::RetryOnInterrupt;
using linux_detail::StatAt;
using linux_detail::ChildOf;
using linux_detail::ReadFolderNames;

FsResult<ItemAttributes> LinuxFileSystem::GetAttributes(const std::string& path) {
  auto at = AtPath::Resolve(path, "get attributes");
  if (!at) return at.Error();
  return StatAt(at.Value().Dir(), at.Value().Name(), LastPathComponent(path), path);
}

FsResult<std::vector<FolderEntry>> LinuxFileSystem::ListFolder(const std::string& path) {
  constexpr std::string_view kOperation = "list folder";
  auto at = AtPath::Resolve(path, kOperation);
  if (!at) return at.Error();
  int fd = RetryOnInterrupt([&] {
    return ::openat(at.Value().Dir(), at.Value().Name(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  });
  if (fd < 0) return ErrnoError(kOperation, path);
  linux_detail::UniqueFd folder(fd);
  auto names = linux_detail::ReadFolderNames(fd, kOperation, path);
  if (!names) return names.Error();
  std::vector<FolderEntry> entries;
  entries.reserve(names.Value().size());
  for (std::string& name : names.Value()) {
    auto attributes = StatAt(fd, name.c_str(), name, ChildOf(path, name));
    if (!attributes) {
      // Removed between the listing and the look at it: the folder no longer holds it.
      if (attributes.Error().code == ENOENT) continue;
      return attributes.Error();
    }
    entries.push_back(FolderEntry{std::move(name), std::move(attributes).Value()});
  }
  std::sort(entries.begin(), entries.end(), [](const FolderEntry& a, const FolderEntry& b) {
    return CompareItemNames(a.name, b.name) < 0;
  });
  return entries;
}

FsResult<std::string> LinuxFileSystem::ReadLink(const std::string& path) {
  constexpr std::string_view kOperation = "read link";
  auto at = AtPath::Resolve(path, kOperation);
  if (!at) return at.Error();
  std::string target(256, '\0');
  for (;;) {
    ssize_t n = ::readlinkat(at.Value().Dir(), at.Value().Name(), target.data(), target.size());
    if (n < 0) return ErrnoError(kOperation, path);
    if (static_cast<std::size_t>(n) < target.size()) {
      target.resize(static_cast<std::size_t>(n));
      return target;
    }
    target.resize(target.size() * 2);
  }
}

FsResult<std::string> LinuxFileSystem::ResolvePath(const std::string& path) {
  std::unique_ptr<char, void (*)(void*)> resolved(::realpath(path.c_str(), nullptr), &std::free);
  if (!resolved) return ErrnoError("resolve path", path);
  return std::string(resolved.get());
}

FsStatus LinuxFileSystem::CheckAccess(const std::string& path, int mode) {
  constexpr std::string_view kOperation = "check access";
  auto at = AtPath::Resolve(path, kOperation);
  if (!at) return at.Error();
  if (::faccessat(at.Value().Dir(), at.Value().Name(), mode, AT_EACCESS | AT_SYMLINK_NOFOLLOW) != 0)
    return ErrnoError(kOperation, path);
  return FsStatus::Success();
}

}  // namespace marigold
