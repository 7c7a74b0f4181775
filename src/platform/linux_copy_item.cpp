// Copying an item. A file goes its own way (linux_file_copy.cpp); anything else is built under a
// temporary name beside its destination and renamed into place only once it is complete with its
// metadata, so the destination path holds either the
// old or the new complete item at every instant; a failure removes the temporary copy and leaves
// an existing destination as it was.
#include <dirent.h>
#include <stdio.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <functional>
#include <memory>
#include <vector>

#include "platform/file_data_copy.h"
#include "platform/linux_file_copy.h"
#include "platform/linux_file_system.h"
#include "platform/linux_metadata.h"
#include "platform/linux_paths.h"
#include "util/temporary_names.h"

namespace marigold {

using namespace linux_detail;

namespace {

constexpr std::string_view kCopy = "copy";

CopyMethod Slowest(CopyMethod a, CopyMethod b) { return a > b ? a : b; }

class ItemCopier {
 public:
  ItemCopier(const CopyOptions& options, bool syncFiles) : mOptions(options), mSyncFiles(syncFiles) {}

  // Creates `destName` in `destFolder` as a copy of `source`. `created` tells the caller whether
  // something now exists under `destName` that must be removed if the copy fails.
  FsStatus Copy(const AtPath& source, const ItemAttributes& attributes, const std::string& sourcePath,
                int destFolder, const std::string& destName, const std::string& destPath,
                bool& created, std::uint64_t progressTotal) {
    created = false;
    FsStatus made = Create(source, attributes, sourcePath, destFolder, destName, destPath, created,
                           progressTotal);
    if (!made) return made;
    AtPath dest(destFolder, destName);
    auto destAttributes = StatAt(destFolder, destName.c_str(), destName, destPath);
    if (!destAttributes) return destAttributes.Error();
    return ApplyMetadata(source, attributes, dest, destAttributes.Value(), destPath);
  }

  const CopyReport& Report() const { return mReport; }

 private:
  FsStatus Create(const AtPath& source, const ItemAttributes& attributes, const std::string& sourcePath,
                  int destFolder, const std::string& destName, const std::string& destPath,
                  bool& created, std::uint64_t progressTotal) {
    switch (attributes.kind) {
      case ItemKind::kFile:
        return CopyFile(source, attributes, sourcePath, destFolder, destName, destPath, created,
                        progressTotal);
      case ItemKind::kFolder:
        return CopyFolder(source, sourcePath, destFolder, destName, destPath, created);
      case ItemKind::kSymlink: {
        std::string target(attributes.size + 1, '\0');
        ssize_t n = ::readlinkat(source.Dir(), source.Name(), target.data(), target.size());
        if (n < 0) return ErrnoError(kCopy, sourcePath);
        if (static_cast<std::size_t>(n) >= target.size())  // the link changed since it was described
          return MakeFsError(EIO, std::string(kCopy), sourcePath, FsProblem::kSourceChanged);
        target.resize(static_cast<std::size_t>(n));
        if (::symlinkat(target.c_str(), destFolder, destName.c_str()) != 0) return ErrnoError(kCopy, destPath);
        created = true;
        return FsStatus::Success();
      }
      case ItemKind::kFifo:
      case ItemKind::kSocket:
      case ItemKind::kCharDevice:
      case ItemKind::kBlockDevice: {
        mode_t type = attributes.kind == ItemKind::kFifo     ? S_IFIFO
                      : attributes.kind == ItemKind::kSocket ? S_IFSOCK
                      : attributes.kind == ItemKind::kCharDevice ? S_IFCHR
                                                                 : S_IFBLK;
        if (::mknodat(destFolder, destName.c_str(), type | 0600, attributes.specialDevice) != 0)
          return ErrnoError(kCopy, destPath);
        created = true;
        return FsStatus::Success();
      }
      case ItemKind::kUnknown:
        break;
    }
    return MakeFsError(EOPNOTSUPP, std::string(kCopy), sourcePath);
  }

  FsStatus CopyFile(const AtPath& source, const ItemAttributes& attributes, const std::string& sourcePath,
                    int destFolder, const std::string& destName, const std::string& destPath,
                    bool& created, std::uint64_t progressTotal) {
    constexpr int kReadFlags = O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC | O_NOCTTY;
    UniqueFd in(RetryOnInterrupt([&] { return ::openat(source.Dir(), source.Name(), kReadFlags | O_NOATIME); }));
    if (!in.Valid() && errno == EPERM)  // O_NOATIME is for the owner only
      in.Reset(RetryOnInterrupt([&] { return ::openat(source.Dir(), source.Name(), kReadFlags); }));
    if (!in.Valid()) return ErrnoError(kCopy, sourcePath);
    struct stat before {};
    if (::fstat(in.Get(), &before) != 0) return ErrnoError(kCopy, sourcePath);
    if (!S_ISREG(before.st_mode) || before.st_ino != attributes.inode)
      return MakeFsError(EIO, std::string(kCopy), sourcePath, FsProblem::kSourceChanged);

    UniqueFd out(RetryOnInterrupt([&] {
      return ::openat(destFolder, destName.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, 0600);
    }));
    if (!out.Valid()) return ErrnoError(kCopy, destPath);
    created = true;
    auto data = CopyFileData(in.Get(), out.Get(), static_cast<std::uint64_t>(before.st_size),
                             before.st_blocks * 512 < before.st_size, mReport.bytesCopied, progressTotal, mOptions, sourcePath, destPath);
    if (!data) return data.Error();
    mReport.bytesCopied += data.Value().bytesCopied;
    mReport.method = Slowest(mReport.method, data.Value().method);

    struct stat after {};
    if (::fstat(in.Get(), &after) != 0) return ErrnoError(kCopy, sourcePath);
    if (after.st_size != before.st_size || after.st_mtim.tv_sec != before.st_mtim.tv_sec ||
        after.st_mtim.tv_nsec != before.st_mtim.tv_nsec)
      return MakeFsError(EIO, std::string(kCopy), sourcePath, FsProblem::kSourceChanged);
    if (mSyncFiles && ::fdatasync(out.Get()) != 0) return ErrnoError(kCopy, destPath);
    if (::close(out.Release()) != 0) return ErrnoError(kCopy, destPath);
    return FsStatus::Success();
  }

  FsStatus CopyFolder(const AtPath& source, const std::string& sourcePath, int destFolder,
                      const std::string& destName, const std::string& destPath, bool& created) {
    if (::mkdirat(destFolder, destName.c_str(), 0700) != 0) return ErrnoError(kCopy, destPath);
    created = true;
    UniqueFd in(RetryOnInterrupt([&] {
      return ::openat(source.Dir(), source.Name(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
    }));
    if (!in.Valid()) return ErrnoError(kCopy, sourcePath);
    UniqueFd out(RetryOnInterrupt([&] {
      return ::openat(destFolder, destName.c_str(), O_PATH | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
    }));
    if (!out.Valid()) return ErrnoError(kCopy, destPath);

    std::unique_ptr<DIR, int (*)(DIR*)> dir(::fdopendir(::dup(in.Get())), &::closedir);
    if (!dir) return ErrnoError(kCopy, sourcePath);
    auto listed = ReadFolderNames(dir.get(), kCopy, sourcePath);
    if (!listed) return listed.Error();
    std::vector<std::string> names = std::move(listed).Value();
    dir.reset();
    for (const std::string& name : names) {
      std::string childSource = ChildOf(sourcePath, name);
      auto attributes = StatAt(in.Get(), name.c_str(), name, childSource);
      if (!attributes) {
        if (attributes.Error().code == ENOENT) continue;  // removed meanwhile: no longer part of it
        return attributes.Error();
      }
      bool childCreated = false;
      // Inside the temporary folder nothing is visible to users yet: no temporary names needed.
      FsStatus child = Copy(AtPath(in.Get(), name), attributes.Value(), childSource, out.Get(), name,
                            ChildOf(destPath, name), childCreated, 0);
      if (!child) return child;
    }
    return FsStatus::Success();
  }

  const CopyOptions& mOptions;
  bool mSyncFiles;
  CopyReport mReport;
};

bool IsFolder(int folderFd, const char* name) {
  struct stat info {};
  return ::fstatat(folderFd, name, &info, AT_SYMLINK_NOFOLLOW) == 0 && S_ISDIR(info.st_mode);
}

// Puts the finished temporary item in place of `dest`. When the destination exists and either
// side is a folder, the two are exchanged and the old item, now under the temporary name, is
// removed. `temporaryGone` tells the caller's clean-up whether the temporary name still holds
// the new copy.
FsStatus Install(int folder, const std::string& temporary, const AtPath& dest, bool destExists,
                 const std::string& destPath, bool& temporaryGone) {
  temporaryGone = false;
  const char* from = temporary.c_str();
  if (!destExists) {
    if (::renameat2(folder, from, folder, dest.Name(), RENAME_NOREPLACE) == 0) {
      temporaryGone = true;
      return FsStatus::Success();
    }
    if (errno != EINVAL && errno != ENOSYS) return ErrnoError(kCopy, destPath);
    struct stat info {};
    if (::fstatat(folder, dest.Name(), &info, AT_SYMLINK_NOFOLLOW) == 0)
      return MakeFsError(EEXIST, std::string(kCopy), destPath);
    if (::renameat(folder, from, folder, dest.Name()) != 0) return ErrnoError(kCopy, destPath);
    temporaryGone = true;
    return FsStatus::Success();
  }
  if (!IsFolder(folder, from) && !IsFolder(folder, dest.Name())) {
    if (::renameat(folder, from, folder, dest.Name()) != 0) return ErrnoError(kCopy, destPath);
    temporaryGone = true;
    return FsStatus::Success();
  }
  std::string old = temporary;
  if (::renameat2(folder, from, folder, dest.Name(), RENAME_EXCHANGE) != 0) {
    if (errno != EINVAL && errno != ENOSYS) return ErrnoError(kCopy, destPath);
    // No exchange on this volume: move the old item aside, then the new one in.
    old = MakeTemporaryName();
    if (::renameat2(folder, dest.Name(), folder, old.c_str(), RENAME_NOREPLACE) != 0 &&
        ::renameat(folder, dest.Name(), folder, old.c_str()) != 0)
      return ErrnoError(kCopy, destPath);
    if (::renameat(folder, from, folder, dest.Name()) != 0) {
      FsError error = ErrnoError(kCopy, destPath);
      ::renameat(folder, old.c_str(), folder, dest.Name());
      return error;
    }
  }
  temporaryGone = true;
  // The new item is in place; the old one waits under a temporary name the engine ignores. It is
  // going away, so its read-only folders are opened to empty them.
  FsStatus removed = RemoveTreeAt(folder, old.c_str(), SiblingPath(destPath, old), true);
  if (!removed)
    return MakeFsError(removed.Error().code, "remove the replaced item", removed.Error().path);
  return FsStatus::Success();
}

}  // namespace

FsResult<CopyReport> LinuxFileSystem::CopyItem(const std::string& source, const std::string& dest,
                                               const CopyOptions& options) {
  auto from = AtPath::Resolve(source, kCopy);
  if (!from) return from.Error();
  FsResult<ItemAttributes> attributes = options.sourceAttributes
                                            ? FsResult<ItemAttributes>(*options.sourceAttributes)
                                            : StatAt(from.Value().Dir(), from.Value().Name(), LastPathComponent(source), source);
  if (!attributes) return attributes.Error();
  if (attributes.Value().kind == ItemKind::kFile) {
    // A file needs its destination's folder opened only when the path is too long to name.
    auto to = AtPath::Resolve(dest, kCopy);
    if (!to) return to.Error();
    struct stat existing {};
    // A new copy does not look first: giving it its name refuses a taken one.
    const bool replacing = options.replaceExisting &&
                           ::fstatat(to.Value().Dir(), to.Value().Name(), &existing, AT_SYMLINK_NOFOLLOW) == 0;
    if (!replacing || !S_ISDIR(existing.st_mode))
      return CopyRegularFile(from.Value(), attributes.Value(), source, to.Value(), dest, replacing, options);
  }
  auto to = AtPath::ResolveInParent(dest, kCopy);
  if (!to) return to.Error();
  const int folder = to.Value().Dir();
  struct stat existing {};
  bool destExists = ::fstatat(folder, to.Value().Name(), &existing, AT_SYMLINK_NOFOLLOW) == 0;
  if (destExists && !options.replaceExisting) return MakeFsError(EEXIST, std::string(kCopy), dest);

  std::string temporary;
  for (int attempt = 0; attempt < 100 && temporary.empty(); ++attempt) {
    std::string candidate = MakeTemporaryName();
    struct stat info {};
    if (::fstatat(folder, candidate.c_str(), &info, AT_SYMLINK_NOFOLLOW) != 0 && errno == ENOENT)
      temporary = candidate;
  }
  if (temporary.empty()) return MakeFsError(EEXIST, std::string(kCopy), dest);

  // Replacing a file: its data must be on disk before the old file's name moves to it.
  ItemCopier copier(options, destExists);
  bool created = false;
  bool temporaryGone = false;
  std::string temporaryPath = SiblingPath(dest, temporary);
  // Whatever way this function is left, a temporary copy that was not put in place goes. Our own
  // partial copy may hold folders already made read-only: they are opened up to remove it.
  struct Guard {
    std::function<void()> cleanUp;
    ~Guard() { cleanUp(); }
  } guard{[&] {
    if (created && !temporaryGone) RemoveTreeAt(folder, temporary.c_str(), temporaryPath, true);
  }};
  std::uint64_t total = attributes.Value().kind == ItemKind::kFile ? attributes.Value().size : 0;
  FsStatus copied = copier.Copy(from.Value(), attributes.Value(), source, folder, temporary,
                                temporaryPath, created, total);
  if (copied && !CopyMayContinue(options, copier.Report().bytesCopied, total))
    copied = MakeFsError(ECANCELED, std::string(kCopy), source, FsProblem::kStopped);
  CopyReport report = copier.Report();
  if (copied && options.backupDate && attributes.Value().kind != ItemKind::kSymlink) {
    const std::string text = std::to_string(*options.backupDate);
    if (::lsetxattr(AtPath(folder, temporary).ProcPath().c_str(), kBackupDateAttribute, text.data(),
                    text.size(), 0) != 0)
      report.backupDateError = errno;
  }
  if (copied) {
    destExists = ::fstatat(folder, to.Value().Name(), &existing, AT_SYMLINK_NOFOLLOW) == 0;
    if (destExists && !options.replaceExisting) copied = MakeFsError(EEXIST, std::string(kCopy), dest);
    else copied = Install(folder, temporary, to.Value(), destExists, dest, temporaryGone);
  }
  if (!copied) {
    FsError error = copied.Error();
    // Errors about the temporary copy name the destination the caller knows.
    if (error.operation == kCopy && error.path.rfind(temporaryPath, 0) == 0) error.path = dest + error.path.substr(temporaryPath.size());
    return error;
  }
  return report;
}

}  // namespace marigold
