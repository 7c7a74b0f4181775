// One row of the preview: a wrapper over a scan-tree node. Rows are made only when their parent
// is opened, so a preview of a huge tree costs memory only for what the user looked at. Editing
// a row edits its node in place: the copy executor later sees the user's choices.
#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "engine/copy_mode.h"
#include "engine/scan_node.h"

namespace marigold {

class FileSystemItem {
 public:
  // numberOfChildren() of a node that has no "subItems": a file, or a folder not walked.
  static constexpr int kLeaf = -1;

  // `tree` is the task tree that `node` belongs to, at `firstNodeIndex` in the run's list; both
  // must outlive the item. `parent` is null for the tree's root.
  FileSystemItem(ScanNode& node, FileSystemItem* parent, const TaskTree& tree, std::size_t firstNodeIndex,
                 std::size_t indexInParent);
  FileSystemItem(const FileSystemItem&) = delete;
  FileSystemItem& operator=(const FileSystemItem&) = delete;

  ScanNode& relativeDict() const { return mNode; }
  FileSystemItem* parent() const { return mParent; }
  std::size_t firstNodeIndex() const { return mFirstNodeIndex; }
  // The root node of this item's task tree, and whether that task synchronises.
  const TaskTree& firstNodeItem() const { return mTree; }
  // Where the item stands among its parent's children (among the roots for a root).
  std::size_t indexInParent() const { return mIndexInParent; }
  int copyMode() const { return mNode.copyMode; }
  // The picture of the item's action; a deletion of a task that moves to the trash shows the trash.
  std::string_view iconName() const { return PreviewIconName(mNode.copyMode, mTree.gIsMoveToTrash); }

  // kLeaf for a node without "subItems", else its number of children (possibly 0).
  int numberOfChildren();
  // The child at `index` (0 <= index < numberOfChildren()); built with its siblings on first use.
  FileSystemItem& childAtIndex(std::size_t index);

  // The item's full path on side A / side B: the task's folders joined with the names on the way
  // down (side B uses B's spelling of each name).
  std::string SourcePath() const;
  std::string DestPath() const;

 private:
  void BuildChildren();

  ScanNode& mNode;
  FileSystemItem* mParent;
  const TaskTree& mTree;
  std::size_t mFirstNodeIndex;
  std::size_t mIndexInParent;
  std::optional<std::vector<std::unique_ptr<FileSystemItem>>> mChildren;
};

}  // namespace marigold
