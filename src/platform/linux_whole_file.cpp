// Whole files: read at once (large ones mapped), and written beside their target under a
// temporary name that replaces the target by rename only once the data is on the disk.
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "platform/linux_file_system.h"
#include "platform/linux_paths.h"
#include "util/temporary_names.h"

namespace marigold {

using namespace linux_detail;

namespace {

constexpr std::string_view kRead = "read";
constexpr std::string_view kWrite = "write";
// Below this a file is read into memory; above it, mapped.
constexpr std::uint64_t kMapAt = std::uint64_t{1} << 20;

FsResult<FileBytes> ReadOpenFile(int fd, std::uint64_t size, std::uint64_t maxBytes, const std::string& path) {
  if (size >= kMapAt) {
    void* mapped = ::mmap(nullptr, size, PROT_READ, MAP_PRIVATE, fd, 0);
    if (mapped == MAP_FAILED) return ErrnoError(kRead, path);
    ::madvise(mapped, size, MADV_SEQUENTIAL);
    return FileBytes(static_cast<const char*>(mapped), size, [mapped, size] { ::munmap(mapped, size); });
  }
  std::string bytes;
  bytes.reserve(size);
  char buffer[65536];
  for (;;) {
    const ssize_t n = RetryOnInterrupt([&] { return ::read(fd, buffer, sizeof buffer); });
    if (n < 0) return ErrnoError(kRead, path);
    if (n == 0) return FileBytes(std::move(bytes));
    if (bytes.size() + static_cast<std::size_t>(n) > maxBytes) return MakeFsError(EFBIG, std::string(kRead), path);
    bytes.append(buffer, static_cast<std::size_t>(n));
  }
}

class LinuxFileWriter final : public FileWriter {
 public:
  LinuxFileWriter(AtPath target, std::string path, std::string temporary, UniqueFd fd)
      : mTarget(std::move(target)), mPath(std::move(path)), mTemporary(std::move(temporary)), mFd(std::move(fd)) {}
  ~LinuxFileWriter() override { Discard(); }

  FsStatus Write(std::string_view bytes) override {
    if (!mFailure.Ok()) return mFailure;
    while (!bytes.empty()) {
      const ssize_t n = RetryOnInterrupt([&] { return ::write(mFd.Get(), bytes.data(), bytes.size()); });
      if (n < 0) return Fail(ErrnoError(kWrite, mPath));
      bytes.remove_prefix(static_cast<std::size_t>(n));
    }
    return FsStatus::Success();
  }

  FsStatus Commit() override {
    if (!mFailure.Ok()) return mFailure;
    if (::fsync(mFd.Get()) != 0) return Fail(ErrnoError(kWrite, mPath));
    if (::close(mFd.Release()) != 0) return Fail(ErrnoError(kWrite, mPath));
    if (::renameat(mTarget.Dir(), mTemporary.c_str(), mTarget.Dir(), mTarget.Name()) != 0)
      return Fail(ErrnoError("rename", mPath));
    mTemporary.clear();
    // The rename itself must survive a crash, or the old file could come back.
    UniqueFd folder(RetryOnInterrupt(
        [&] { return ::openat(mTarget.Dir(), ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC); }));
    if (folder.Valid()) ::fsync(folder.Get());
    return FsStatus::Success();
  }

 private:
  FsStatus Fail(FsError error) {
    mFailure = std::move(error);
    Discard();
    return mFailure;
  }
  void Discard() {
    mFd.Reset();
    if (!mTemporary.empty()) ::unlinkat(mTarget.Dir(), mTemporary.c_str(), 0);
    mTemporary.clear();
  }

  AtPath mTarget;
  std::string mPath;
  std::string mTemporary;  // empty once renamed or removed
  UniqueFd mFd;
  FsStatus mFailure;
};

}  // namespace

FsResult<FileBytes> LinuxFileSystem::ReadFile(const std::string& path, std::uint64_t maxBytes) {
  auto at = AtPath::Resolve(path, kRead);
  if (!at) return at.Error();
  // Non-blocking, so that a pipe met here is refused instead of waited on.
  UniqueFd fd(RetryOnInterrupt([&] {
    return ::openat(at.Value().Dir(), at.Value().Name(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
  }));
  if (!fd.Valid()) return ErrnoError(kRead, path);
  struct stat info {};
  if (::fstat(fd.Get(), &info) != 0) return ErrnoError(kRead, path);
  if (S_ISDIR(info.st_mode)) return MakeFsError(EISDIR, std::string(kRead), path);
  if (!S_ISREG(info.st_mode)) return MakeFsError(EINVAL, std::string(kRead), path);
  const auto size = static_cast<std::uint64_t>(info.st_size);
  if (size > maxBytes) return MakeFsError(EFBIG, std::string(kRead), path);
  return ReadOpenFile(fd.Get(), size, maxBytes, path);
}

FsResult<std::unique_ptr<FileWriter>> LinuxFileSystem::StartFileWrite(const std::string& path,
                                                                      std::optional<std::uint32_t> mode) {
  auto target = AtPath::ResolveInParent(path, kWrite);
  if (!target) return target.Error();
  const int folder = target.Value().Dir();
  struct stat existing {};
  if (!mode && ::fstatat(folder, target.Value().Name(), &existing, 0) == 0) mode = existing.st_mode & 07777;

  // With a mode of its own the file starts private, so nobody can open it before it is set.
  std::string temporary;
  UniqueFd fd;
  for (int attempt = 0; attempt < 100 && !fd.Valid(); ++attempt) {
    temporary = MakeTemporaryName();
    fd.Reset(RetryOnInterrupt([&] {
      return ::openat(folder, temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC,
                      mode ? 0600 : 0666);
    }));
    if (!fd.Valid() && errno != EEXIST) return ErrnoError(kWrite, path);
  }
  if (!fd.Valid()) return MakeFsError(EEXIST, std::string(kWrite), path);
  if (mode && ::fchmod(fd.Get(), *mode) != 0) {
    FsError error = ErrnoError("set mode", path);
    ::unlinkat(folder, temporary.c_str(), 0);
    return error;
  }
  return std::unique_ptr<FileWriter>(
      std::make_unique<LinuxFileWriter>(std::move(target).Value(), path, temporary, std::move(fd)));
}

}  // namespace marigold
