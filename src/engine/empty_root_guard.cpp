#include "engine/empty_root_guard.h"

#include <unordered_set>

#include "engine/copy_mode.h"
#include "util/strings_table.h"
#include "util/temporary_names.h"

namespace marigold {
namespace {

bool HasDeletion(const ScanNode& root, int deleteMode) {
  for (const ScanNode& item : root.subItems) {
    if (item.copyMode == deleteMode) return true;
  }
  return false;
}

// Whether the root at `path` is no real side: it holds nothing but hidden or leftover items, or
// none of the names the index recorded there at the last run (`recorded`, hidden names aside).
bool IsHollowRoot(FileSystem& fs, const std::string& path, const std::vector<std::string>& recorded) {
  auto entries = fs.ListFolder(path);
  if (!entries) return false;
  auto counts = [](std::string_view name) { return !IsInvisibleName(name) && !IsTemporaryName(name); };
  std::unordered_set<std::string> present;
  for (const FolderEntry& entry : entries.Value()) {
    if (counts(entry.name)) present.insert(entry.name);
  }
  if (present.empty()) return true;
  bool anyRecorded = false;
  for (const std::string& name : recorded) {
    if (!counts(name)) continue;
    if (present.contains(name)) return false;
    anyRecorded = true;
  }
  return anyRecorded;
}

std::string EmptyRootMessage(const std::string& emptyRoot, bool emptyIsSource, const std::string& otherRoot) {
  return GLS(emptyIsSource ? "The source folder" : "The destination folder") + " \"" + emptyRoot + "\" " +
         GLS("is empty, and this exact task would delete the items of") + " \"" + otherRoot + "\".\r" +
         GLS("Its volume may not be mounted, or its network connection may have dropped.");
}

}  // namespace

bool EmptyRootAllowsTask(EngineContext& context, ErrorPath& errors, const TaskTree& tree) {
  RunState& state = context.state;
  if (!state.session.gIsExactOn) return true;
  auto hollow = [&](int where, const std::string& root) {
    return IsHollowRoot(context.fs, root, context.services.index->IndexedRootNames(state, where));
  };
  bool emptyIsSource = false;
  if (HasDeletion(tree.root, kCopyModeDeleteInB) && hollow(1, tree.source)) {
    emptyIsSource = true;
  } else if (!(HasDeletion(tree.root, kCopyModeDeleteInA) && hollow(0, tree.dest))) {
    return true;
  }
  const std::string message = emptyIsSource ? EmptyRootMessage(tree.source, true, tree.dest)
                                            : EmptyRootMessage(tree.dest, false, tree.source);
  if (state.mExecutedBy != kExecutedByUser) {
    errors.SetErrMsg({message, "\r", GLS("The task was skipped.")});
    errors.AddErrQuickly(2);
    return false;
  }
  // Stop comes first: a press of Return must never be what empties a disk.
  AlertRequest request;
  request.style = AlertRequest::Style::Critical;
  request.title = errors.gErrorTitleDialog();
  request.text = message;
  request.informative = GLS("Continue deletes them; Stop ends the run and deletes nothing.");
  request.buttons = {GLS("Stop"), GLS("Continue")};
  if (context.proxy.Alert(request) == 1) return true;
  state.mUserPressedStop = true;
  state.mIsCopying = false;
  return false;
}

}  // namespace marigold
