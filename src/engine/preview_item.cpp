#include "engine/preview_item.h"

namespace marigold {

FileSystemItem::FileSystemItem(ScanNode& node, FileSystemItem* parent, const TaskTree& tree,
                               std::size_t firstNodeIndex, std::size_t indexInParent)
    : mNode(node), mParent(parent), mTree(tree), mFirstNodeIndex(firstNodeIndex), mIndexInParent(indexInParent) {}

int FileSystemItem::numberOfChildren() {
  if (!mNode.hasSubItems) return kLeaf;
  BuildChildren();
  return static_cast<int>(mChildren->size());
}

FileSystemItem& FileSystemItem::childAtIndex(std::size_t index) {
  BuildChildren();
  return *mChildren->at(index);
}

void FileSystemItem::BuildChildren() {
  if (mChildren) return;
  mChildren.emplace();
  mChildren->reserve(mNode.subItems.size());
  for (std::size_t i = 0; i < mNode.subItems.size(); ++i) {
    mChildren->push_back(std::make_unique<FileSystemItem>(mNode.subItems[i], this, mTree, mFirstNodeIndex, i));
  }
}

std::string FileSystemItem::SourcePath() const {
  return mParent == nullptr ? mTree.source : ChildPath(mParent->SourcePath(), mNode.name);
}

std::string FileSystemItem::DestPath() const {
  return mParent == nullptr ? mTree.dest : ChildPath(mParent->DestPath(), mNode.DestName());
}

}  // namespace marigold
