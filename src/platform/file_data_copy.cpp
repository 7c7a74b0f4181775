#include "platform/file_data_copy.h"

#include <linux/fs.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <vector>

#include "platform/linux_paths.h"

namespace marigold::linux_detail {

namespace {

// Bytes per copy_file_range call: large, so that a big file takes few calls, and small enough
// that progress and a stop are seen a few times a second.
constexpr std::uint64_t kRangeChunk = 64u << 20;
constexpr std::uint64_t kBufferSize = 1u << 20;   // bytes per read in the read/write loop

bool IsWriteSideError(int error) {
  return error == ENOSPC || error == EDQUOT || error == EFBIG || error == EROFS;
}

// copy_file_range cannot do it here (another volume, a file system without it): read and write.
bool RangeUnavailable(int error) {
  return error == EXDEV || error == EINVAL || error == EOPNOTSUPP || error == ENOTSUP ||
         error == ENOSYS || error == EBADF || error == ETXTBSY;
}

struct Copier {
  int source, dest;
  std::uint64_t size, base, total;
  const CopyOptions& options;
  const std::string& sourcePath;
  const std::string& destPath;
  bool useRange = true;
  bool usedRange = false, usedReadWrite = false;
  std::uint64_t copied = 0;
  off_t end = 0;  // where the last data written ends
  std::vector<char> buffer;

  FsError Fail(int error, bool writeSide) {
    return MakeFsError(error, "copy", writeSide ? destPath : sourcePath);
  }

  // Writes all of buffer[0, length) at `offset`.
  bool WriteAll(std::size_t length, off_t offset) {
    std::size_t done = 0;
    while (done < length) {
      ssize_t n = RetryOnInterrupt([&] { return ::pwrite(dest, buffer.data() + done, length - done, offset + static_cast<off_t>(done)); });
      if (n < 0) return false;
      done += static_cast<std::size_t>(n);
    }
    return true;
  }

  // Copies bytes [from, to) of the source to the same offsets of the destination.
  std::optional<FsError> CopySegment(off_t from, off_t to) {
    off_t offset = from;
    while (offset < to) {
      std::uint64_t want = static_cast<std::uint64_t>(to - offset);
      ssize_t n;
      if (useRange) {
        loff_t in = offset, out = offset;
        n = RetryOnInterrupt([&] { return ::copy_file_range(source, &in, dest, &out, std::min(want, kRangeChunk), 0); });
        if (n < 0 && RangeUnavailable(errno)) {
          useRange = false;
          continue;
        }
        if (n < 0) return Fail(errno, IsWriteSideError(errno));
        usedRange = true;
      } else {
        if (buffer.empty()) buffer.resize(std::min<std::uint64_t>(kBufferSize, size));
        n = RetryOnInterrupt([&] { return ::pread(source, buffer.data(), std::min<std::uint64_t>(want, buffer.size()), offset); });
        if (n < 0) return Fail(errno, false);
        if (n > 0 && !WriteAll(static_cast<std::size_t>(n), offset)) return Fail(errno, true);
        usedReadWrite = true;
      }
      if (n == 0) return MakeFsError(EIO, "copy", sourcePath, FsProblem::kSourceChanged);
      offset += n;
      end = offset;
      copied += static_cast<std::uint64_t>(n);
      if (!CopyMayContinue(options, base + copied, total))
        return MakeFsError(ECANCELED, "copy", sourcePath, FsProblem::kStopped);
    }
    return std::nullopt;
  }

  std::optional<FsError> CopyAll(bool mayHaveHoles) {
    const off_t end = static_cast<off_t>(size);
    // A file with a block for every byte has no hole to look for.
    if (!mayHaveHoles) return CopySegment(0, end);
    off_t position = 0;
    while (position < end) {
      off_t data = ::lseek(source, position, SEEK_DATA);
      off_t hole = end;
      if (data < 0) {
        if (errno == ENXIO) break;  // only a hole remains
        if (errno != EINVAL) return Fail(errno, false);
        data = position;  // no hole support: everything is data
      } else {
        hole = ::lseek(source, data, SEEK_HOLE);
        if (hole < 0) hole = end;
      }
      if (data >= end) break;
      hole = std::min(hole, end);
      if (auto error = CopySegment(data, hole)) return error;
      position = hole;
    }
    return std::nullopt;
  }
};

}  // namespace

bool CopyMayContinue(const CopyOptions& options, std::uint64_t copied, std::uint64_t total) {
  if (options.keepRunning != nullptr && !options.keepRunning->load()) return false;
  return !options.progress || options.progress(copied, total);
}

FsResult<CopyReport> CopyFileData(int sourceFd, int destFd, std::uint64_t size, bool mayHaveHoles,
                                  std::uint64_t alreadyCopied, std::uint64_t progressTotal,
                                  const CopyOptions& options, const std::string& sourcePath,
                                  const std::string& destPath) {
  CopyHints* hints = options.hints;
  if (size > 0 && !(hints && hints->noClone.load(std::memory_order_relaxed))) {
    if (::ioctl(destFd, FICLONE, sourceFd) != 0) {
      // Not between these volumes; any other refusal may be this file's alone.
      if (hints && (errno == EOPNOTSUPP || errno == EXDEV || errno == ENOTTY || errno == EINVAL))
        hints->noClone.store(true, std::memory_order_relaxed);
    } else {
      // A clone copies up to the end of the file as it is now; a longer file is caught afterwards.
      if (!CopyMayContinue(options, alreadyCopied + size, progressTotal))
        return MakeFsError(ECANCELED, "copy", sourcePath, FsProblem::kStopped);
      return CopyReport{CopyMethod::kClone, size};
    }
  }
  Copier copier{sourceFd, destFd, size, alreadyCopied, progressTotal, options, sourcePath, destPath};
  if (auto error = copier.CopyAll(mayHaveHoles)) return *error;
  // The trailing hole, if any, and the size when the file ends in one.
  if (copier.end != static_cast<off_t>(size) &&
      RetryOnInterrupt([&] { return ::ftruncate(destFd, static_cast<off_t>(size)); }) != 0)
    return MakeFsError(errno, "copy", destPath);
  CopyMethod method = copier.usedReadWrite ? CopyMethod::kReadWrite
                      : copier.usedRange   ? CopyMethod::kCopyRange
                                           : CopyMethod::kNone;
  return CopyReport{method, copier.copied};
}

}  // namespace marigold::linux_detail
