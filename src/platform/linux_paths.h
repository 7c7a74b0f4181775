// Building blocks of LinuxFileSystem (not for the engine): owned descriptors, items named
// relative to an open folder, and the one statx call that describes an item.
#pragma once

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <string>
#include <string_view>
#include <vector>

#include "platform/fs_result.h"
#include "platform/item_attributes.h"

namespace marigold::linux_detail {

// Closes its descriptor when it goes away.
class UniqueFd {
 public:
  UniqueFd() = default;
  explicit UniqueFd(int fd) : mFd(fd) {}
  UniqueFd(UniqueFd&& other) noexcept : mFd(other.Release()) {}
  UniqueFd& operator=(UniqueFd&& other) noexcept;
  UniqueFd(const UniqueFd&) = delete;
  UniqueFd& operator=(const UniqueFd&) = delete;
  ~UniqueFd();

  int Get() const { return mFd; }
  bool Valid() const { return mFd >= 0; }
  int Release();
  void Reset(int fd = -1);

 private:
  int mFd = -1;
};

// An item named by an open folder and a name in it. A path shorter than PATH_MAX is used as it is
// (the folder is AT_FDCWD); a longer one has its parent opened piece by piece, so every *at call
// works on it. Moving keeps the folder open; copies are not allowed.
class AtPath {
 public:
  // Opens what is needed to reach `path`; the error names `operation`.
  static FsResult<AtPath> Resolve(const std::string& path, std::string_view operation);
  // Like Resolve, but the parent folder is always opened, so that siblings (temporary names)
  // can be made beside the item.
  static FsResult<AtPath> ResolveInParent(const std::string& path, std::string_view operation);
  // An item in a folder the caller keeps open.
  AtPath(int folderFd, std::string name) : mDir(folderFd), mName(std::move(name)) {}

  int Dir() const { return mDir; }
  const char* Name() const { return mName.c_str(); }
  const std::string& NameString() const { return mName; }
  // A path usable by calls without an *at form (extended attributes, access lists): the name
  // itself, or "/proc/self/fd/N/name" through the open folder.
  std::string ProcPath() const;

 private:
  AtPath() = default;
  UniqueFd mOwned;
  int mDir = AT_FDCWD;
  std::string mName;
};

// An FsError from the current errno.
FsError ErrnoError(std::string_view operation, const std::string& path);

// Describes `name` in `folderFd` without following a link; `nameForFlags` (the item's own name)
// decides invisibility and packages.
FsResult<ItemAttributes> StatAt(int folderFd, const char* name, std::string_view nameForFlags,
                                const std::string& pathForErrors);
ItemAttributes AttributesFromStatx(const struct statx& info, std::string_view name);

// Removes `name` in `folderFd` and, for a folder, everything inside it, depth first. With
// `openFolders`, each folder is first made writable by its owner (for our own partial copies).
FsStatus RemoveTreeAt(int folderFd, const char* name, const std::string& pathForErrors,
                      bool openFolders = false);

// `folder` + "/" + `name`, without doubling a trailing "/".
std::string ChildOf(const std::string& folder, std::string_view name);

// `name` in the folder holding `path`.
std::string SiblingPath(std::string path, const std::string& name);

// Every name an open folder holds except "." and "..", in the order the folder gives them.
FsResult<std::vector<std::string>> ReadFolderNames(DIR* folder, std::string_view operation,
                                                   const std::string& pathForErrors);

// The same from a folder opened for reading, without the stream's own calls (the descriptor
// stays open and its position moves to the end).
FsResult<std::vector<std::string>> ReadFolderNames(int folderFd, std::string_view operation,
                                                   const std::string& pathForErrors);

// "/proc/self/fd/N": a path naming what an open descriptor names.
std::string FdPath(int fd);

// Retries a system call interrupted by a signal.
template <class F>
auto RetryOnInterrupt(F call) {
  decltype(call()) result;
  do {
    result = call();
  } while (result == -1 && errno == EINTR);
  return result;
}

}  // namespace marigold::linux_detail
