#include "engine/empty_root_guard.h"

#include "engine/copy_mode.h"
#include "util/strings_table.h"

namespace marigold {
namespace {

bool HasDeletion(const ScanNode& root, int deleteMode) {
  for (const ScanNode& item : root.subItems) {
    if (item.copyMode == deleteMode) return true;
  }
  return false;
}

bool IsEmptyFolder(FileSystem& fs, const std::string& path) {
  auto entries = fs.ListFolder(path);
  return entries && entries.Value().empty();
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
  bool emptyIsSource = false;
  if (HasDeletion(tree.root, kCopyModeDeleteInB) && IsEmptyFolder(context.fs, tree.source)) {
    emptyIsSource = true;
  } else if (!(HasDeletion(tree.root, kCopyModeDeleteInA) && IsEmptyFolder(context.fs, tree.dest))) {
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
