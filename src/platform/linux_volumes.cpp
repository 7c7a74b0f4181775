// Volumes: free space, the mounted volume holding an item, and whether its names match
// ignoring case.
#include <dirent.h>
#include <linux/fs.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <memory>
#include <unordered_set>

#include "platform/linux_file_system.h"
#include "platform/linux_paths.h"
#include "platform/mount_table.h"
#include "util/temporary_names.h"

namespace marigold {

using linux_detail::AtPath;
using linux_detail::ErrnoError;
using linux_detail::RetryOnInterrupt;
using linux_detail::UniqueFd;

namespace {

std::optional<std::string> RealPath(const std::string& path) {
  std::unique_ptr<char, void (*)(void*)> resolved(::realpath(path.c_str(), nullptr), &std::free);
  if (!resolved) return std::nullopt;
  return std::string(resolved.get());
}

// The absolute location of the item itself (a final link is not followed). For a path too long
// to resolve, the longest resolvable leading part stands for it: volumes are not mounted that
// deep.
std::optional<std::string> Locate(const std::string& path) {
  std::string current = path;
  while (current.size() > 1 && current.back() == '/') current.pop_back();
  std::string_view leaf = LastPathComponent(current);
  struct stat info {};
  if (leaf != "/" && leaf != "." && leaf != ".." && ::lstat(current.c_str(), &info) == 0 &&
      S_ISLNK(info.st_mode)) {
    std::string folder = current.substr(0, current.size() - leaf.size());
    auto resolved = RealPath(folder.empty() ? std::string(".") : folder);
    if (resolved) return *resolved + (resolved->back() == '/' ? "" : "/") + std::string(leaf);
  }
  for (;;) {
    if (auto resolved = RealPath(current)) return resolved;
    if (errno != ENAMETOOLONG) return std::nullopt;
    std::size_t slash = current.rfind('/');
    if (slash == std::string::npos || slash == 0) return std::nullopt;
    current.resize(slash);
  }
}

// The label of the root volume's device, from udev's by-label links, else the host name.
std::string RootVolumeName(const std::string& source) {
  auto device = RealPath(source);
  if (device) {
    std::unique_ptr<DIR, int (*)(DIR*)> dir(::opendir("/dev/disk/by-label"), &::closedir);
    while (dir) {
      struct dirent* d = ::readdir(dir.get());
      if (d == nullptr) break;
      std::string name = d->d_name;
      if (name == "." || name == "..") continue;
      if (RealPath("/dev/disk/by-label/" + name) != device) continue;
      std::string label;  // udev writes blanks and such as "\x20"
      for (std::size_t i = 0; i < name.size(); ++i) {
        if (name.compare(i, 2, "\\x") == 0 && i + 3 < name.size()) {
          label += static_cast<char>(std::strtol(name.substr(i + 2, 2).c_str(), nullptr, 16));
          i += 3;
        } else {
          label += name[i];
        }
      }
      return label;
    }
  }
  char host[256] = {};
  ::gethostname(host, sizeof host - 1);
  return host;
}

char SwapAsciiCase(char c) {
  if (c >= 'a' && c <= 'z') return static_cast<char>(c - 'a' + 'A');
  if (c >= 'A' && c <= 'Z') return static_cast<char>(c - 'A' + 'a');
  return c;
}

std::string SwapCase(std::string name) {
  for (char& c : name) c = SwapAsciiCase(c);
  return name;
}

// Whether `other`, a name the folder does not list, still reaches an item: then the folder
// matched it to a name differing in case. (Inode numbers cannot tell: FUSE volumes may give one
// item a new number per name.) Nothing when it cannot tell.
std::optional<bool> FoundUnderOtherCase(int folder, const std::string& other) {
  struct stat info {};
  if (::fstatat(folder, other.c_str(), &info, AT_SYMLINK_NOFOLLOW) == 0) return true;
  return errno == ENOENT ? std::optional<bool>(false) : std::nullopt;
}

}  // namespace

FsResult<std::uint64_t> LinuxFileSystem::GetFreeSpace(const std::string& path) {
  constexpr std::string_view kOperation = "get free space";
  auto at = AtPath::Resolve(path, kOperation);
  if (!at) return at.Error();
  struct statvfs info {};
  if (::statvfs(at.Value().ProcPath().c_str(), &info) != 0) return ErrnoError(kOperation, path);
  return static_cast<std::uint64_t>(info.f_bavail) * info.f_frsize;
}

FsResult<VolumeInfo> LinuxFileSystem::GetVolume(const std::string& path) {
  constexpr std::string_view kOperation = "find volume";
  auto location = Locate(path);
  if (!location) return ErrnoError(kOperation, path);
  auto mount = FindMount(ReadMountTable(), *location);
  if (!mount) return MakeFsError(ENOENT, std::string(kOperation), path);
  VolumeInfo volume;
  volume.mountPoint = mount->mountPoint;
  volume.type = mount->type;
  volume.source = mount->source;
  volume.readOnly = mount->readOnly;
  volume.ignoresOwnership = TypeIgnoresOwnership(mount->type);
  volume.name = mount->mountPoint == "/" ? RootVolumeName(mount->source)
                                         : std::string(LastPathComponent(mount->mountPoint));
  return volume;
}

FsResult<bool> LinuxFileSystem::IsCaseInsensitive(const std::string& folder, bool mayCreateProbe) {
  constexpr std::string_view kOperation = "probe letter case";
  auto at = AtPath::Resolve(folder, kOperation);
  if (!at) return at.Error();
  UniqueFd fd(RetryOnInterrupt([&] {
    return ::openat(at.Value().Dir(), at.Value().Name(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  }));
  if (!fd.Valid()) return ErrnoError(kOperation, folder);
  int flags = 0;
  if (::ioctl(fd.Get(), FS_IOC_GETFLAGS, &flags) == 0 && (flags & FS_CASEFOLD_FL)) return true;
  if (auto volume = GetVolume(folder)) {
    if (TypeIsCaseInsensitive(volume.Value().type)) return true;
    if (TypeIsCaseSensitive(volume.Value().type)) return false;
  }

  // Unknown volume type. An item already there with letters in its name tells without writing.
  std::unordered_set<std::string> names;
  std::unique_ptr<DIR, int (*)(DIR*)> dir(::fdopendir(::dup(fd.Get())), &::closedir);
  while (dir) {
    struct dirent* d = ::readdir(dir.get());
    if (d == nullptr) break;
    names.insert(d->d_name);
  }
  for (const std::string& name : names) {
    std::string other = SwapCase(name);
    if (other == name || names.count(other) != 0) continue;
    if (auto found = FoundUnderOtherCase(fd.Get(), other)) return *found;
  }
  if (!mayCreateProbe) return MakeFsError(ENOTSUP, std::string(kOperation), folder);

  // Ask the folder itself with a probe file, and give the folder back its dates afterwards.
  struct stat before {};
  const bool datesKnown = ::fstat(fd.Get(), &before) == 0;
  std::string probe = MakeTemporaryName();
  UniqueFd made(::openat(fd.Get(), probe.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600));
  if (!made.Valid()) return ErrnoError(kOperation, folder);
  auto same = FoundUnderOtherCase(fd.Get(), SwapCase(probe));
  ::unlinkat(fd.Get(), probe.c_str(), 0);
  if (datesKnown) {
    const struct timespec times[2] = {before.st_atim, before.st_mtim};
    ::futimens(fd.Get(), times);
  }
  if (same) return *same;
  return MakeFsError(EIO, std::string(kOperation), folder);
}

}  // namespace marigold
