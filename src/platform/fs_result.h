// Results of file-system calls: a value or an error that carries the errno, the operation and the
// path, so the engine can both decide on the errno and print a message that names the item.
// No exception ever leaves the platform layer.
#pragma once

#include <string>
#include <utility>
#include <variant>

namespace marigold {

// What kind of failure beyond the errno; the engine words its messages from it.
enum class FsProblem {
  kSystem,         // the system refused; `code` says why
  kSourceChanged,  // the source of a copy changed while it was being read
  kStopped,        // the stop flag or the progress callback ended the operation
  kCannotTrash,    // the item could not be moved to the trash (it was left where it was)
};

struct FsError {
  int code = 0;           // an errno value
  std::string operation;  // short English verb phrase: "rename", "copy", "list folder", ...
  std::string path;       // the item the operation was about
  FsProblem problem = FsProblem::kSystem;

  // "rename \"/a/b\": No such file or directory"; the problem's own words when it is not kSystem.
  std::string Message() const;
  // The item (or a folder on its way) does not exist.
  bool IsMissing() const;
};

FsError MakeFsError(int code, std::string operation, std::string path,
                    FsProblem problem = FsProblem::kSystem);

// A value of T, or an FsError.
template <class T>
class FsResult {
 public:
  FsResult(T value) : mData(std::move(value)) {}            // NOLINT: implicit on purpose
  FsResult(FsError error) : mData(std::move(error)) {}      // NOLINT
  bool Ok() const { return mData.index() == 0; }
  explicit operator bool() const { return Ok(); }
  const T& Value() const& { return std::get<0>(mData); }
  T& Value() & { return std::get<0>(mData); }
  T&& Value() && { return std::get<0>(std::move(mData)); }
  const FsError& Error() const { return std::get<1>(mData); }

 private:
  std::variant<T, FsError> mData;
};

// Success, or an FsError.
class FsStatus {
 public:
  FsStatus() = default;
  FsStatus(FsError error) : mError(std::move(error)), mFailed(true) {}  // NOLINT
  static FsStatus Success() { return {}; }
  bool Ok() const { return !mFailed; }
  explicit operator bool() const { return Ok(); }
  const FsError& Error() const { return mError; }

 private:
  FsError mError;
  bool mFailed = false;
};

}  // namespace marigold
