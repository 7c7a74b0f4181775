// Copying one regular file. Everything after the two opens acts on descriptors: the source is
// described from the descriptor it is read through (so what is copied and what is checked are
// the same file), and the copy's metadata is set before the copy has a name.
#include "platform/linux_file_copy.h"

#include <fcntl.h>
#include <stdio.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "platform/file_data_copy.h"
#include "platform/linux_metadata.h"
#include "util/temporary_names.h"

namespace marigold::linux_detail {

namespace {

constexpr std::string_view kCopy = "copy";

// Errors of O_TMPFILE that say the volume (or the kernel) has no unnamed files.
bool UnnamedFilesRefused(int error) {
  return error == EOPNOTSUPP || error == ENOTSUP || error == EISDIR || error == EINVAL;
}

FsError SourceChanged(const std::string& sourcePath) {
  return MakeFsError(EIO, std::string(kCopy), sourcePath, FsProblem::kSourceChanged);
}

bool ReadAttributesOf(int fd, ItemAttributes& attributes, std::string_view name) {
  struct statx info {};
  if (::statx(fd, "", AT_EMPTY_PATH, STATX_BASIC_STATS | STATX_BTIME, &info) != 0) return false;
  attributes = AttributesFromStatx(info, name);
  return true;
}

UniqueFd OpenSource(const AtPath& source, const ItemAttributes& attributes) {
  constexpr int kReadFlags = O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC | O_NOCTTY;
  // O_NOATIME is for the owner (and root) only: others would only be refused once first.
  static const uid_t euid = ::geteuid();
  if (euid == 0 || euid == attributes.uid) {
    UniqueFd in(RetryOnInterrupt([&] { return ::openat(source.Dir(), source.Name(), kReadFlags | O_NOATIME); }));
    if (in.Valid() || errno != EPERM) return in;
  }
  return UniqueFd(RetryOnInterrupt([&] { return ::openat(source.Dir(), source.Name(), kReadFlags); }));
}

// The folder of `dest` opened for an unnamed file; invalid with errno set when refused.
UniqueFd OpenUnnamed(const AtPath& dest) {
  constexpr int kFlags = O_TMPFILE | O_WRONLY | O_CLOEXEC;
  if (dest.Dir() != AT_FDCWD) return UniqueFd(RetryOnInterrupt([&] { return ::openat(dest.Dir(), ".", kFlags, 0600); }));
  const std::string& path = dest.NameString();
  const std::size_t slash = path.rfind('/');
  const std::string folder = slash == std::string::npos ? "." : (slash == 0 ? "/" : path.substr(0, slash));
  return UniqueFd(RetryOnInterrupt([&] { return ::open(folder.c_str(), kFlags, 0600); }));
}

// Gives the complete unnamed file its name; EEXIST when something took the name meanwhile.
bool LinkUnnamed(int fd, const AtPath& dest) {
  static const bool isRoot = ::geteuid() == 0;
  if (isRoot) return ::linkat(fd, "", dest.Dir(), dest.Name(), AT_EMPTY_PATH) == 0;
  return ::linkat(AT_FDCWD, FdPath(fd).c_str(), dest.Dir(), dest.Name(), AT_SYMLINK_FOLLOW) == 0;
}

// Moves the complete temporary file to its name: over an existing file when `replacing`, else
// only where the name is still free.
bool MoveIntoPlace(const AtPath& dest, const std::string& temporary, bool replacing) {
  const int folder = dest.Dir();
  if (replacing) return ::renameat(folder, temporary.c_str(), folder, dest.Name()) == 0;
  if (::renameat2(folder, temporary.c_str(), folder, dest.Name(), RENAME_NOREPLACE) == 0) return true;
  if (errno != EINVAL && errno != ENOSYS) return false;
  // No such rename on this volume: a hard link refuses a taken name just the same.
  if (::linkat(folder, temporary.c_str(), folder, dest.Name(), 0) == 0) {
    ::unlinkat(folder, temporary.c_str(), 0);
    return true;
  }
  if (errno != EPERM && errno != EOPNOTSUPP && errno != EMLINK) return false;
  // Nor hard links (FAT, exFAT): look, then rename.
  struct stat info {};
  if (::fstatat(folder, dest.Name(), &info, AT_SYMLINK_NOFOLLOW) == 0) {
    errno = EEXIST;
    return false;
  }
  return ::renameat(folder, temporary.c_str(), folder, dest.Name()) == 0;
}

}  // namespace

FsResult<CopyReport> CopyRegularFile(const AtPath& source, const ItemAttributes& attributes,
                                     const std::string& sourcePath, const AtPath& dest,
                                     const std::string& destPath, bool replacing,
                                     const CopyOptions& options) {
  UniqueFd in = OpenSource(source, attributes);
  if (!in.Valid()) return ErrnoError(kCopy, sourcePath);
  ItemAttributes before;
  if (!ReadAttributesOf(in.Get(), before, LastPathComponent(sourcePath))) return ErrnoError(kCopy, sourcePath);
  if (before.kind != ItemKind::kFile || before.inode != attributes.inode) return SourceChanged(sourcePath);

  CopyHints* hints = options.hints;
  UniqueFd out;
  std::string temporary;  // stays empty for an unnamed file
  if (!replacing && !(hints && hints->noUnnamedFiles.load(std::memory_order_relaxed))) {
    out = OpenUnnamed(dest);
    if (!out.Valid() && !UnnamedFilesRefused(errno)) return ErrnoError(kCopy, destPath);
    if (!out.Valid() && hints) hints->noUnnamedFiles.store(true, std::memory_order_relaxed);
  }
  for (int attempt = 0; !out.Valid() && attempt < 100; ++attempt) {
    temporary = SiblingPath(dest.NameString(), MakeTemporaryName());
    out.Reset(RetryOnInterrupt([&] {
      return ::openat(dest.Dir(), temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, 0600);
    }));
    if (!out.Valid() && errno != EEXIST) return ErrnoError(kCopy, destPath);
  }
  if (!out.Valid()) return MakeFsError(EEXIST, std::string(kCopy), destPath);
  // Whatever way this function is left, a temporary file that did not take its name goes.
  struct Guard {
    const AtPath& dest;
    std::string& temporary;
    ~Guard() {
      if (!temporary.empty()) ::unlinkat(dest.Dir(), temporary.c_str(), 0);
    }
  } guard{dest, temporary};

  const bool mayHaveHoles = before.allocatedBytes < before.size;
  auto data = CopyFileData(in.Get(), out.Get(), before.size, mayHaveHoles, 0, before.size, options,
                           sourcePath, destPath);
  if (!data) return data.Error();
  CopyReport report = data.Value();
  ItemAttributes after;
  if (!ReadAttributesOf(in.Get(), after, LastPathComponent(sourcePath))) return ErrnoError(kCopy, sourcePath);
  if (after.size != before.size || after.modificationTime != before.modificationTime) return SourceChanged(sourcePath);
  if (!CopyMayContinue(options, report.bytesCopied, before.size))
    return MakeFsError(ECANCELED, std::string(kCopy), sourcePath, FsProblem::kStopped);

  // Replacing a file: its data must be on disk before the old file's name moves to it.
  if (replacing && ::fdatasync(out.Get()) != 0) return ErrnoError(kCopy, destPath);
  std::optional<std::int64_t> backupDate = options.backupDate;
  FsStatus described = ApplyFileMetadata(in.Get(), out.Get(), before, backupDate, report.backupDateError, hints,
                                         destPath);
  if (!described) return described.Error();

  if (temporary.empty()) {
    if (!LinkUnnamed(out.Get(), dest)) return ErrnoError(kCopy, destPath);
    // A volume may report a failed write only when the file is closed: the name goes again.
    if (::close(out.Release()) != 0) {
      FsError error = ErrnoError(kCopy, destPath);
      ::unlinkat(dest.Dir(), dest.Name(), 0);
      return error;
    }
    return report;
  }
  if (::close(out.Release()) != 0) return ErrnoError(kCopy, destPath);
  if (!MoveIntoPlace(dest, temporary, replacing)) return ErrnoError(kCopy, destPath);
  temporary.clear();
  return report;
}

}  // namespace marigold::linux_detail
