// Whole files through the file-system seam: the bytes of a file read at once, and a file written
// under a temporary name that replaces its target only when complete (see FileSystem::ReadFile
// and FileSystem::StartFileWrite).
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>

#include "platform/fs_result.h"

namespace marigold {

// The bytes of a file: held in memory, or mapped (so the pages of a large index can be dropped
// again while it is parsed) and released when this object goes.
class FileBytes {
 public:
  FileBytes() = default;
  explicit FileBytes(std::string bytes) : mOwned(std::move(bytes)) {}
  FileBytes(const char* data, std::size_t size, std::function<void()> release)
      : mData(data), mSize(size), mRelease(std::move(release)) {}
  FileBytes(FileBytes&& other) noexcept { *this = std::move(other); }
  FileBytes& operator=(FileBytes&& other) noexcept;
  FileBytes(const FileBytes&) = delete;
  FileBytes& operator=(const FileBytes&) = delete;
  ~FileBytes();

  std::string_view View() const { return mData ? std::string_view(mData, mSize) : std::string_view(mOwned); }

 private:
  std::string mOwned;
  const char* mData = nullptr;
  std::size_t mSize = 0;
  std::function<void()> mRelease;
};

// A file being written under a temporary name beside its target. Until Commit succeeds the target
// is untouched; a writer dropped uncommitted, or whose Write or Commit failed, has removed its
// temporary file. After a failure every further call returns that failure.
class FileWriter {
 public:
  virtual ~FileWriter() = default;
  // Appends `bytes` to the temporary file.
  virtual FsStatus Write(std::string_view bytes) = 0;
  // Syncs and closes the temporary file, renames it over the target and syncs the folder.
  virtual FsStatus Commit() = 0;
};

}  // namespace marigold
