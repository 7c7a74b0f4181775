#include "platform/linux_paths.h"

#include <limits.h>
#include <sys/syscall.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <random>
#include <utility>

namespace marigold::linux_detail {

UniqueFd& UniqueFd::operator=(UniqueFd&& other) noexcept {
  if (this != &other) Reset(other.Release());
  return *this;
}

UniqueFd::~UniqueFd() { Reset(); }

int UniqueFd::Release() { return std::exchange(mFd, -1); }

void UniqueFd::Reset(int fd) {
  if (mFd >= 0) ::close(mFd);
  mFd = fd;
}

FsError ErrnoError(std::string_view operation, const std::string& path) {
  return MakeFsError(errno, std::string(operation), path);
}

std::string ChildOf(const std::string& folder, std::string_view name) {
  std::string path = folder;
  if (path.empty() || path.back() != '/') path += '/';
  path += name;
  return path;
}

std::string SiblingPath(std::string path, const std::string& name) {
  while (path.size() > 1 && path.back() == '/') path.pop_back();
  std::string_view leaf = LastPathComponent(path);
  std::string folder = path.substr(0, path.size() - leaf.size());
  while (folder.size() > 1 && folder.back() == '/') folder.pop_back();
  return folder.empty() ? name : ChildOf(folder, name);
}

FsResult<std::vector<std::string>> ReadFolderNames(DIR* folder, std::string_view operation,
                                                   const std::string& pathForErrors) {
  std::vector<std::string> names;
  for (;;) {
    errno = 0;
    struct dirent* d = ::readdir(folder);
    if (d == nullptr) {
      if (errno != 0) return ErrnoError(operation, pathForErrors);
      return names;
    }
    std::string_view name = d->d_name;
    if (name != "." && name != "..") names.emplace_back(name);
  }
}

FsResult<std::vector<std::string>> ReadFolderNames(int folderFd, std::string_view operation,
                                                   const std::string& pathForErrors) {
  std::vector<std::string> names;
  alignas(dirent64) char buffer[32768];
  for (;;) {
    const long n = RetryOnInterrupt([&] { return ::syscall(SYS_getdents64, folderFd, buffer, sizeof buffer); });
    if (n < 0) return ErrnoError(operation, pathForErrors);
    if (n == 0) return names;
    for (long offset = 0; offset < n;) {
      const auto* entry = reinterpret_cast<const dirent64*>(buffer + offset);
      std::string_view name = entry->d_name;
      if (name != "." && name != "..") names.emplace_back(name);
      offset += entry->d_reclen;
    }
  }
}

std::string FdPath(int fd) { return "/proc/self/fd/" + std::to_string(fd); }

std::string AtPath::ProcPath() const {
  if (mDir == AT_FDCWD) return mName;
  return FdPath(mDir) + "/" + mName;
}

FsResult<AtPath> AtPath::Resolve(const std::string& path, std::string_view operation) {
  if (path.empty()) return MakeFsError(ENOENT, std::string(operation), path);
  std::string trimmed = path;
  while (trimmed.size() > 1 && trimmed.back() == '/') trimmed.pop_back();

  AtPath result;
  if (trimmed.size() < PATH_MAX) {
    result.mName = std::move(trimmed);
    return result;
  }
  // Too long for one call: open the parent a piece at a time, each piece shorter than PATH_MAX.
  std::size_t slash = trimmed.rfind('/');
  std::string leaf = trimmed.substr(slash + 1);
  std::string parent = trimmed.substr(0, slash);
  std::size_t pos = 0;
  if (parent.empty() || trimmed[0] == '/') {
    result.mOwned.Reset(::open("/", O_PATH | O_DIRECTORY | O_CLOEXEC));
    if (!result.mOwned.Valid()) return ErrnoError(operation, path);
    pos = 1;
  }
  std::string piece;
  auto openPiece = [&]() -> bool {
    int base = result.mOwned.Valid() ? result.mOwned.Get() : AT_FDCWD;
    int fd = RetryOnInterrupt([&] { return ::openat(base, piece.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC); });
    if (fd < 0) return false;
    result.mOwned.Reset(fd);
    piece.clear();
    return true;
  };
  while (pos < parent.size()) {
    std::size_t end = parent.find('/', pos);
    if (end == std::string::npos) end = parent.size();
    std::string_view component(parent.data() + pos, end - pos);
    pos = end + 1;
    if (component.empty()) continue;
    if (!piece.empty() && piece.size() + 1 + component.size() >= PATH_MAX - 1) {
      if (!openPiece()) return ErrnoError(operation, path);
    }
    if (component.size() >= PATH_MAX - 1) return MakeFsError(ENAMETOOLONG, std::string(operation), path);
    if (!piece.empty()) piece += '/';
    piece += component;
  }
  if (!piece.empty() && !openPiece()) return ErrnoError(operation, path);
  result.mDir = result.mOwned.Valid() ? result.mOwned.Get() : AT_FDCWD;
  result.mName = leaf.empty() ? std::string(".") : std::move(leaf);
  return result;
}

FsResult<AtPath> AtPath::ResolveInParent(const std::string& path, std::string_view operation) {
  auto resolved = Resolve(path, operation);
  if (!resolved || resolved.Value().mDir != AT_FDCWD) return resolved;
  AtPath& at = resolved.Value();
  if (at.mName == "/") return MakeFsError(EBUSY, std::string(operation), path);
  std::size_t slash = at.mName.rfind('/');
  std::string parent = slash == std::string::npos ? "." : (slash == 0 ? "/" : at.mName.substr(0, slash));
  int fd = RetryOnInterrupt([&] { return ::open(parent.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC); });
  if (fd < 0) return ErrnoError(operation, path);
  at.mOwned.Reset(fd);
  at.mDir = fd;
  if (slash != std::string::npos) at.mName.erase(0, slash + 1);
  return resolved;
}

static FileTime FromStatx(const struct statx_timestamp& t) {
  return FileTime{t.tv_sec, t.tv_nsec};
}

static ItemKind KindOf(unsigned mode) {
  switch (mode & S_IFMT) {
    case S_IFREG: return ItemKind::kFile;
    case S_IFDIR: return ItemKind::kFolder;
    case S_IFLNK: return ItemKind::kSymlink;
    case S_IFIFO: return ItemKind::kFifo;
    case S_IFSOCK: return ItemKind::kSocket;
    case S_IFCHR: return ItemKind::kCharDevice;
    case S_IFBLK: return ItemKind::kBlockDevice;
    default: return ItemKind::kUnknown;
  }
}

ItemAttributes AttributesFromStatx(const struct statx& info, std::string_view name) {
  ItemAttributes a;
  a.kind = KindOf(info.stx_mode);
  a.size = info.stx_size;
  a.allocatedBytes = info.stx_blocks * 512;
  a.mode = info.stx_mode & 07777;
  a.uid = info.stx_uid;
  a.gid = info.stx_gid;
  a.modificationTime = FromStatx(info.stx_mtime);
  a.statusTime = FromStatx(info.stx_ctime);
  a.accessTime = FromStatx(info.stx_atime);
  if (info.stx_mask & STATX_BTIME) a.creationTime = FromStatx(info.stx_btime);
  a.device = makedev(info.stx_dev_major, info.stx_dev_minor);
  a.inode = info.stx_ino;
  a.linkCount = info.stx_nlink;
  a.specialDevice = makedev(info.stx_rdev_major, info.stx_rdev_minor);
  a.isLocked = (info.stx_attributes_mask & STATX_ATTR_IMMUTABLE) &&
               (info.stx_attributes & STATX_ATTR_IMMUTABLE);
  a.isInvisible = IsInvisibleName(name);
  a.isPackage = a.kind == ItemKind::kFolder && IsPackageName(name);
  return a;
}

FsResult<ItemAttributes> StatAt(int folderFd, const char* name, std::string_view nameForFlags,
                                const std::string& pathForErrors) {
  struct statx info {};
  int rc = RetryOnInterrupt([&] {
    return ::statx(folderFd, name, AT_SYMLINK_NOFOLLOW | AT_NO_AUTOMOUNT,
                   STATX_BASIC_STATS | STATX_BTIME, &info);
  });
  if (rc != 0) return ErrnoError("get attributes", pathForErrors);
  return AttributesFromStatx(info, nameForFlags);
}

}  // namespace marigold::linux_detail
