#include "engine/preview_editor.h"

#include <algorithm>
#include <cstdlib>

#include "engine/copy_mode.h"
#include "util/strings_table.h"

namespace marigold {
namespace {

bool IsDeletion(int mode) { return mode == kCopyModeDeleteInA || mode == kCopyModeDeleteInB; }
bool IsAction(int mode) { return mode >= kCopyModeCopyAToB && mode <= kCopyModeMetadataBToA; }

}  // namespace

PreviewEditor::PreviewEditor(std::vector<TaskTree>& trees, RunTallies& tallies,
                             std::vector<std::vector<std::string>>& exactIndexAdditions, FileSystem& fs)
    : mTallies(tallies), mExactIndexAdditions(exactIndexAdditions), mFs(fs) {
  mRoots.reserve(trees.size());
  for (std::size_t i = 0; i < trees.size(); ++i) {
    mRoots.push_back(std::make_unique<FileSystemItem>(trees[i].root, nullptr, trees[i], i, i));
  }
}

PreviewClickResult PreviewEditor::ClickTheRow(FileSystemItem* item, int column, unsigned keys) {
  PreviewClickResult result;
  if (item == nullptr || column < kPreviewColumnSideA || column > kPreviewColumnSideB) {
    result.deselectAll = true;
    return result;
  }
  if (column != kPreviewColumnAction) {
    if ((keys & kPreviewKeyControl) == 0) return result;
    std::string path = column == kPreviewColumnSideA ? item->SourcePath() : item->DestPath();
    if (mFs.GetAttributes(path)) {
      result.reveal = std::move(path);
    } else {
      result.beep = true;
    }
    return result;
  }
  if ((keys & kPreviewKeyOption) != 0) {
    result.reload = ChangeCopyModeDirection(*item);
    result.beep = !result.reload;
    return result;
  }
  SwitchTheItem(*item);
  result.reload = true;
  return result;
}

void PreviewEditor::SwitchTheItem(FileSystemItem& item) {
  const int mode = item.copyMode();
  const bool deletion = (std::abs(mode) | 1) == kCopyModeDeleteInB;
  // A copied item needs its folders; a folder cannot be deleted while something in it is kept.
  // Switching a deletion back on leaves its folders as the user set them.
  if (mode < 0 && !deletion) changeParent(item.parent(), true);
  if (mode >= 0 && deletion) changeParent(item.parent(), false);
  changeCopyMode(item, mode < 0);
}

bool PreviewEditor::ChangeCopyModeDirection(FileSystemItem& item) {
  ScanNode& node = item.relativeDict();
  const int mode = node.copyMode;
  if ((mode != kCopyModeReplaceAToB && mode != kCopyModeReplaceBToA) || !item.firstNodeItem().gIsSyncOn) return false;
  mTallies.Count(mode, -1);
  node.copyMode = SwapDirection(mode);
  mTallies.Count(node.copyMode, 1);
  return true;
}

void PreviewEditor::changeCopyMode(FileSystemItem& item, bool on) {
  ChangeNodeMode(item.relativeDict(), item.firstNodeIndex(), item.SourcePath(), item.DestPath(), on);
}

void PreviewEditor::ChangeNodeMode(ScanNode& node, std::size_t tree, const std::string& a, const std::string& b,
                                   bool on) {
  SwitchNode(node, tree, a, b, on);
  // The nodes themselves, not rows: switching a whole tree must not build a row per item.
  for (ScanNode& child : node.subItems) {
    ChangeNodeMode(child, tree, ChildPath(a, child.name), ChildPath(b, child.DestName()), on);
  }
}

void PreviewEditor::changeParent(FileSystemItem* item, bool on) {
  for (; item != nullptr; item = item->parent()) {
    const int mode = item->copyMode();
    if (on ? mode >= 0 : !IsDeletion(mode)) return;
    SwitchNode(item->relativeDict(), item->firstNodeIndex(), item->SourcePath(), item->DestPath(), on);
  }
}

bool PreviewEditor::SwitchNode(ScanNode& node, std::size_t tree, const std::string& a, const std::string& b,
                               bool on) {
  const int mode = node.copyMode;
  // Only modes 1..9 can be switched off, and only their negatives back on; 0 is a skip already.
  const int onMode = on ? -mode : mode;
  if (onMode < kCopyModeNothing || onMode > kCopyModeMetadataBToA) return false;
  const std::int64_t step = on ? 1 : -1;
  if (IsAction(onMode)) {
    AddOrRemovePath(node, tree, a, b, mode);
    mTallies.runItemsToDo += step;
  }
  mTallies.Count(onMode, step);
  mTallies.runSwitchedOff -= step;
  node.copyMode = -mode;
  return true;
}

void PreviewEditor::AddOrRemoveItemToExactIndex(const FileSystemItem& item, int mode) {
  AddOrRemovePath(item.relativeDict(), item.firstNodeIndex(), item.SourcePath(), item.DestPath(), mode);
}

void PreviewEditor::AddOrRemovePath(const ScanNode& node, std::size_t tree, const std::string& a,
                                    const std::string& b, int mode) {
  if (node.ifSkipAddToExactIndex < 0 || tree >= mExactIndexAdditions.size()) return;
  const std::string& path = node.ifSkipAddToExactIndex == 1 ? a : b;
  std::vector<std::string>& list = mExactIndexAdditions[tree];
  if (mode >= kCopyModeNothing) {
    list.push_back(path);
  } else {
    list.erase(std::remove(list.begin(), list.end(), path), list.end());
  }
}

FileSystemItem* PreviewEditor::SearchNextOrPreviousItem(FileSystemItem* from, bool previous) {
  FileSystemItem* item = nullptr;
  if (from != nullptr) {
    item = previous ? PreviousInOutline(*from) : NextInOutline(*from);
  } else if (!mRoots.empty()) {
    item = previous ? &LastDescendant(*mRoots.back()) : mRoots.front().get();
  }
  while (item != nullptr && !IsDeletion(item->copyMode())) {
    item = previous ? PreviousInOutline(*item) : NextInOutline(*item);
  }
  return item;
}

FileSystemItem* PreviewEditor::Sibling(FileSystemItem& item, int step) {
  if (step < 0 && item.indexInParent() == 0) return nullptr;
  const std::size_t index = item.indexInParent() + static_cast<std::size_t>(static_cast<std::ptrdiff_t>(step));
  FileSystemItem* parent = item.parent();
  if (parent == nullptr) return index < mRoots.size() ? mRoots[index].get() : nullptr;
  return static_cast<int>(index) < parent->numberOfChildren() ? &parent->childAtIndex(index) : nullptr;
}

FileSystemItem* PreviewEditor::NextInOutline(FileSystemItem& item) {
  if (item.numberOfChildren() > 0) return &item.childAtIndex(0);
  for (FileSystemItem* up = &item; up != nullptr; up = up->parent()) {
    if (FileSystemItem* next = Sibling(*up, 1)) return next;
  }
  return nullptr;
}

FileSystemItem* PreviewEditor::PreviousInOutline(FileSystemItem& item) {
  if (FileSystemItem* before = Sibling(item, -1)) return &LastDescendant(*before);
  return item.parent();
}

FileSystemItem& PreviewEditor::LastDescendant(FileSystemItem& item) {
  FileSystemItem* last = &item;
  for (int count = last->numberOfChildren(); count > 0; count = last->numberOfChildren()) {
    last = &last->childAtIndex(static_cast<std::size_t>(count - 1));
  }
  return *last;
}

std::string PreviewWindowTitle(bool allSessions, const SessionSwitches& session) {
  std::string title = GLS("Preview") + " - ";
  if (allSessions) return title + GLS("Multiple Sessions");
  if (session.gIsExactOn) title += GLS("Exact ");
  return title + GLS(session.gIsSyncOn ? "Sync" : "Backup");
}

std::vector<PreviewTally> PreviewTallies(const RunTallies& t) {
  return {{GLS("existing"), t.runNothing},           {GLS("skipped"), t.runSwitchedOff},
          {GLS("delete"), t.runToDelete},            {GLS("copy A to B"), t.runToCopyAToB},
          {GLS("copy B to A"), t.runToCopyBToA},     {GLS("attributes A to B"), t.runMetadataAToB},
          {GLS("attributes B to A"), t.runMetadataBToA}, {GLS("total"), t.runItemsToDo.load()}};
}

}  // namespace marigold
