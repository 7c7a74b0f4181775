// Depth-first walk of a folder tree through a FileSystem. The walk keeps one path buffer and the
// listing of each open level, never a second copy of the tree, so a million-item tree costs
// only its deepest branch in memory.
#pragma once

#include <cstddef>
#include <functional>
#include <string>

#include "platform/file_system.h"

namespace marigold {

struct WalkItem {
  const std::string& path;          // full path (root joined with the relative path)
  const std::string& relativePath;  // path below the root, "a/b/c"; never empty
  const FolderEntry& entry;
  int depth;                        // 1 for the root's own items
};

enum class WalkAction {
  kContinue,      // go on; descend into a folder
  kSkipChildren,  // go on without descending into this folder
  kStop,          // end the walk now; Walk returns success
};

struct WalkCallbacks {
  // Called for each item in listing order, before a folder's items.
  std::function<WalkAction(const WalkItem&)> visit;
  // Called after the items of a folder the walk went into (for instance to set the folder's
  // dates once its content is written).
  std::function<void(const WalkItem&)> leave;
  // Called when a folder cannot be listed; return true to go on without it, false to stop the
  // walk with that error. Without it every listing error stops the walk.
  std::function<bool(const FsError&)> listingFailed;
};

// Walks everything below `root` (not the root itself). Links are reported, never followed;
// packages are descended into like any folder unless `visit` says kSkipChildren.
FsStatus WalkTree(FileSystem& fs, const std::string& root, const WalkCallbacks& callbacks);

}  // namespace marigold
