#include "platform/tree_walk.h"

#include <vector>

namespace marigold {

namespace {

struct Level {
  std::vector<FolderEntry> entries;
  std::size_t next = 0;
  std::size_t pathLength = 0;      // length of the folder's full path
  std::size_t relativeLength = 0;  // length of the folder's relative path
};

}  // namespace

FsStatus WalkTree(FileSystem& fs, const std::string& root, const WalkCallbacks& callbacks) {
  std::string path = root;
  while (path.size() > 1 && path.back() == '/') path.pop_back();
  std::string relative;

  auto listing = fs.ListFolder(path);
  if (!listing) return listing.Error();
  std::vector<Level> stack;
  stack.push_back(Level{std::move(listing).Value(), 0, path.size(), 0});

  while (!stack.empty()) {
    Level& level = stack.back();
    path.resize(level.pathLength);
    relative.resize(level.relativeLength);
    if (level.next == level.entries.size()) {
      stack.pop_back();
      if (stack.empty()) break;
      // Back in the parent: report the folder just finished.
      Level& parent = stack.back();
      const FolderEntry& folder = parent.entries[parent.next - 1];
      path.resize(parent.pathLength);
      relative.resize(parent.relativeLength);
      if (path.empty() || path.back() != '/') path += '/';
      path += folder.name;
      if (!relative.empty()) relative += '/';
      relative += folder.name;
      if (callbacks.leave) callbacks.leave(WalkItem{path, relative, folder, static_cast<int>(stack.size())});
      continue;
    }
    const FolderEntry& entry = level.entries[level.next++];
    if (path.empty() || path.back() != '/') path += '/';
    path += entry.name;
    if (!relative.empty()) relative += '/';
    relative += entry.name;
    int depth = static_cast<int>(stack.size());
    WalkAction action = callbacks.visit ? callbacks.visit(WalkItem{path, relative, entry, depth})
                                        : WalkAction::kContinue;
    if (action == WalkAction::kStop) return FsStatus::Success();
    if (entry.attributes.kind != ItemKind::kFolder || action == WalkAction::kSkipChildren) continue;

    auto children = fs.ListFolder(path);
    if (!children) {
      if (callbacks.listingFailed && callbacks.listingFailed(children.Error())) continue;
      return children.Error();
    }
    // `level` may move when the stack grows; nothing below uses it.
    stack.push_back(Level{std::move(children).Value(), 0, path.size(), relative.size()});
  }
  return FsStatus::Success();
}

}  // namespace marigold
