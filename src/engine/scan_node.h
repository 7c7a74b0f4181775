// The scan tree of one task. A node keeps names, not paths: the full paths of an item are its
// root's folders joined with the names on the way down, computed while walking. This keeps a
// tree of a million items within a few hundred megabytes.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "platform/item_attributes.h"

namespace marigold {

inline constexpr std::uint8_t kResolvedLinkA = 1;
inline constexpr std::uint8_t kResolvedLinkB = 2;

struct ScanNode {
  std::string name;      // the item's name on side A (A's spelling when both sides hold it)
  std::string destName;  // B's spelling when it differs from `name` in letter case; else empty
  int copyMode = 1;      // a CopyMode, negated when switched off in the preview
  // -1 absent; 0 an item of side A only, 1 an item of side B only, judged against the index of
  // the last exact run (the preview adds the path it names to the index when switched off).
  int ifSkipAddToExactIndex = -1;
  bool hasSubItems = false;      // a folder node that was walked ("subItems" present)
  // kResolvedLinkA / kResolvedLinkB: that side's item is a symbolic link the scan followed, so
  // the copy acts on its target rather than on the link.
  std::uint8_t resolvedLinks = 0;
  ItemSnapshot snapshotA;        // what the scan saw on each side, checked again before the
  ItemSnapshot snapshotB;        // executor overwrites or deletes the item
  std::vector<ScanNode> subItems;

  const std::string& DestName() const { return destName.empty() ? name : destName; }
};

// The root of a task's tree, with the task's identity and its two main folders.
// Its root node has no name of its own: the root's paths are `source` and `dest`.
struct TaskTree {
  std::int64_t sessionIndex = 0;
  std::int64_t taskIndex = 0;
  std::string source;  // side A folder (gSourceFolder)
  std::string dest;    // side B folder (gDestFolder)
  bool gIsSyncOn = false;
  bool gIsMoveToTrash = false;  // deletions go to the trash (the session's settings)
  ScanNode root;       // root.copyMode is the tree's own mode; root.subItems its items
};

// Joins a folder path and a name with one "/".
std::string ChildPath(const std::string& folder, const std::string& name);

}  // namespace marigold
