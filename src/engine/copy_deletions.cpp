// Deleting or trashing items. A folder is deleted only once its contents are gone, each checked
// against the scan, so an item added or changed since the scan keeps its folder. A folder that
// goes to the trash travels whole, so that it can be put back as it was: the items inside are
// checked and logged, and join the trashed counts once the folder is in the trash.
#include "engine/copy_executor.h"
#include "engine/error_path.h"
#include "util/strings_table.h"

namespace marigold {

bool CopyExecutor::QLDeleteFile(const std::string& path, bool sideA, const ItemAttributes& attributes,
                                bool isParentToDelete) {
  RunState& state = mContext.state;
  FileSystem& fs = mContext.fs;
  const bool trash = state.session.gIsMoveToTrash;
  const bool withFolder = trash && isParentToDelete;
  const std::string failure = GLS(trash ? "Can't trash the file" : "Can't delete the file");
  if (attributes.isLocked) {
    if (!state.session.gIsUnlockOn)
      return ReportError({failure, " ", Quoted(path), "\r", GLS("The file is locked")});
    FsStatus unlocked = fs.SetLocked(path, false);
    if (!unlocked)
      return ReportError({GLS("Can't unlock the file"), " ", Quoted(path), "\r",
                          FailureDescription(unlocked.Error(), GLS("Can't unlock the file"))});
  }
  if (!withFolder) {
    if (!MayChangeItemsIn(ParentFolderOf(path)) &&
        !mContext.services.folders->UnlockChain(state, path, SideRoot(sideA), 2))
      return ReportError({failure, " ", Quoted(path), "\r", GLS("Insufficient privileges")});
    // A package is a folder on disk: it goes with everything inside it, locked items included
    // when locked items are handled.
    if (!trash && attributes.IsFolder() && state.session.gIsUnlockOn) mContext.services.folders->UnlockWholeItem(state, path);
    FsStatus done = trash ? fs.MoveToTrash(path) : attributes.IsFolder() ? fs.RemoveTree(path) : fs.RemoveItem(path);
    if (!done) return ReportError({failure, " ", Quoted(path), "\r", FailureDescription(done.Error(), failure)});
  }
  SideCopyCounters& side = state.Side(sideA);
  if (trash) {
    ++(withFolder ? (sideA ? mInnerTrashA : mInnerTrashB) : side).FilesTrashed;
    if (withFolder) AddTrashLine(mWords.trashedFile, path);
    else AddSuccessLine(mWords.trashedFile, path);
  } else {
    ++side.FilesDeleted;
    AddSuccessLine(mWords.deletedFile, path);
  }
  // An item inside a folder that goes to the trash whole is gone once its folder is.
  if (!withFolder) state.gItemsDeleted.insert(path);
  mContext.services.folders->RemoveItemOKFromRestore(state, path);
  return true;
}

bool CopyExecutor::QLDeleteFolder(const std::string& path, bool sideA, const ItemAttributes& attributes,
                                  bool isParentToDelete) {
  RunState& state = mContext.state;
  FileSystem& fs = mContext.fs;
  const bool trash = state.session.gIsMoveToTrash;
  const bool withFolder = trash && isParentToDelete;
  const bool mayChange = withFolder || MayChangeItemsIn(ParentFolderOf(path));
  if ((attributes.isLocked || !mayChange) && !mContext.services.folders->UnlockChain(state, path, SideRoot(sideA), 2))
    return ReportError({GLS("Insufficient Privileges"), " ", Quoted(path)});
  if (!withFolder) {
    const std::string failure = GLS(trash ? "Can't trash the folder" : "Can't delete the folder");
    // Removal takes an empty folder only: whatever appeared in it since the scan keeps it.
    FsStatus done = trash ? fs.MoveToTrash(path) : fs.RemoveItem(path);
    if (!done) return ReportError({failure, " ", Quoted(path), "\r", FailureDescription(done.Error(), failure)});
  }
  SideCopyCounters& side = state.Side(sideA);
  if (trash) {
    ++(withFolder ? (sideA ? mInnerTrashA : mInnerTrashB) : side).FoldersTrashed;
    if (withFolder) AddTrashLine(mWords.trashedFolder, path);
    else AddSuccessLine(mWords.trashedFolder, path);
  } else {
    ++side.FoldersDeleted;
    AddSuccessLine(mWords.deletedFolder, path);
  }
  // An item inside a folder that goes to the trash whole is gone once its folder is.
  if (!withFolder) state.gItemsDeleted.insert(path);
  mContext.services.folders->RemoveItemOKFromRestore(state, path);
  return true;
}

}  // namespace marigold
