#include "platform/fs_result.h"

#include <cerrno>
#include <cstring>

namespace marigold {

FsError MakeFsError(int code, std::string operation, std::string path, FsProblem problem) {
  return FsError{code, std::move(operation), std::move(path), problem};
}

std::string FsError::Message() const {
  std::string reason;
  switch (problem) {
    case FsProblem::kSystem:
      reason = std::strerror(code);
      break;
    case FsProblem::kSourceChanged:
      reason = "the source changed while it was copied";
      break;
    case FsProblem::kStopped:
      reason = "stopped";
      break;
    case FsProblem::kCannotTrash:
      reason = std::string("cannot trash (") + std::strerror(code) + ")";
      break;
  }
  return operation + " \"" + path + "\": " + reason;
}

bool FsError::IsMissing() const {
  return problem == FsProblem::kSystem && (code == ENOENT || code == ENOTDIR);
}

}  // namespace marigold
