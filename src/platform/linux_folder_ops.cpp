// Creating, removing and renaming items.
#include <dirent.h>
#include <stdio.h>
#include <unistd.h>

#include <cerrno>
#include <memory>
#include <vector>

#include "platform/linux_file_system.h"
#include "platform/linux_paths.h"

namespace marigold {

namespace linux_detail {

FsStatus RemoveTreeAt(int folderFd, const char* name, const std::string& pathForErrors,
                      bool openFolders) {
  constexpr std::string_view kOperation = "remove";
  struct stat info {};
  if (::fstatat(folderFd, name, &info, AT_SYMLINK_NOFOLLOW) != 0)
    return ErrnoError(kOperation, pathForErrors);
  if (!S_ISDIR(info.st_mode)) {
    if (::unlinkat(folderFd, name, 0) != 0) return ErrnoError(kOperation, pathForErrors);
    return FsStatus::Success();
  }
  if (openFolders) ::fchmodat(folderFd, name, (info.st_mode & 07777) | S_IRWXU, 0);
  int fd = RetryOnInterrupt([&] {
    return ::openat(folderFd, name, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
  });
  if (fd < 0) return ErrnoError(kOperation, pathForErrors);
  std::unique_ptr<DIR, int (*)(DIR*)> dir(::fdopendir(fd), &::closedir);
  if (!dir) {
    FsError error = ErrnoError(kOperation, pathForErrors);
    ::close(fd);
    return error;
  }
  // Names first, removal after: a folder changed while it is read may skip entries.
  auto names = ReadFolderNames(dir.get(), kOperation, pathForErrors);
  if (!names) return names.Error();
  for (const std::string& child : names.Value()) {
    FsStatus removed = RemoveTreeAt(::dirfd(dir.get()), child.c_str(),
                                    ChildOf(pathForErrors, child), openFolders);
    if (!removed && removed.Error().code != ENOENT) return removed;
  }
  dir.reset();
  if (::unlinkat(folderFd, name, AT_REMOVEDIR) != 0) return ErrnoError(kOperation, pathForErrors);
  return FsStatus::Success();
}

}  // namespace linux_detail

using linux_detail::AtPath;
using linux_detail::ErrnoError;

namespace {

std::string ParentOf(const std::string& path) {
  std::string trimmed = path;
  while (trimmed.size() > 1 && trimmed.back() == '/') trimmed.pop_back();
  std::size_t slash = trimmed.rfind('/');
  if (slash == std::string::npos) return {};
  if (slash == 0) return "/";
  return trimmed.substr(0, slash);
}

}  // namespace

FsStatus LinuxFileSystem::CreateFolder(const std::string& path, std::uint32_t mode,
                                       bool withIntermediates) {
  constexpr std::string_view kOperation = "create folder";
  auto at = AtPath::Resolve(path, kOperation);
  if (!at && !(withIntermediates && at.Error().code == ENOENT)) return at.Error();
  if (at && ::mkdirat(at.Value().Dir(), at.Value().Name(), mode) == 0) return FsStatus::Success();
  int error = at ? errno : ENOENT;
  if (withIntermediates && error == EEXIST) {
    auto existing = GetAttributes(path);
    if (existing && existing.Value().kind == ItemKind::kFolder) return FsStatus::Success();
    auto resolved = GetAttributes(path + "/.");  // a link to a folder counts as a folder
    if (resolved && resolved.Value().kind == ItemKind::kFolder) return FsStatus::Success();
  }
  if (!withIntermediates || error != ENOENT) return MakeFsError(error, std::string(kOperation), path);
  std::string parent = ParentOf(path);
  if (parent.empty() || parent == path) return MakeFsError(error, std::string(kOperation), path);
  FsStatus parentMade = CreateFolder(parent, 0777, true);
  if (!parentMade) return parentMade;
  return CreateFolder(path, mode, false);
}

FsStatus LinuxFileSystem::RemoveItem(const std::string& path) {
  constexpr std::string_view kOperation = "remove";
  auto at = AtPath::Resolve(path, kOperation);
  if (!at) return at.Error();
  struct stat info {};
  if (::fstatat(at.Value().Dir(), at.Value().Name(), &info, AT_SYMLINK_NOFOLLOW) != 0)
    return ErrnoError(kOperation, path);
  int flags = S_ISDIR(info.st_mode) ? AT_REMOVEDIR : 0;
  if (::unlinkat(at.Value().Dir(), at.Value().Name(), flags) != 0) {
    // Some file systems say EEXIST for a folder that is not empty.
    if (errno == EEXIST) errno = ENOTEMPTY;
    return ErrnoError(kOperation, path);
  }
  return FsStatus::Success();
}

FsStatus LinuxFileSystem::RemoveTree(const std::string& path) {
  auto at = AtPath::Resolve(path, "remove");
  if (!at) return at.Error();
  return linux_detail::RemoveTreeAt(at.Value().Dir(), at.Value().Name(), path);
}

FsStatus LinuxFileSystem::Rename(const std::string& from, const std::string& to, bool replace) {
  constexpr std::string_view kOperation = "rename";
  auto source = AtPath::Resolve(from, kOperation);
  if (!source) return source.Error();
  auto target = AtPath::Resolve(to, kOperation);
  if (!target) return target.Error();
  const AtPath& s = source.Value();
  const AtPath& t = target.Value();
  if (replace) {
    if (::renameat(s.Dir(), s.Name(), t.Dir(), t.Name()) != 0) return ErrnoError(kOperation, from);
    return FsStatus::Success();
  }
  if (::renameat2(s.Dir(), s.Name(), t.Dir(), t.Name(), RENAME_NOREPLACE) == 0)
    return FsStatus::Success();
  if (errno != EINVAL && errno != ENOSYS) return ErrnoError(kOperation, from);
  // The volume cannot refuse to replace by itself: look first (a small race, as with any tool).
  struct stat info {};
  if (::fstatat(t.Dir(), t.Name(), &info, AT_SYMLINK_NOFOLLOW) == 0)
    return MakeFsError(EEXIST, std::string(kOperation), to);
  if (::renameat(s.Dir(), s.Name(), t.Dir(), t.Name()) != 0) return ErrnoError(kOperation, from);
  return FsStatus::Success();
}

}  // namespace marigold
