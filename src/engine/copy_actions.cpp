// The actions that write an item: creating a folder, copying a new item, replacing an existing
// one. A copy is always built under a temporary name and renamed into place by the file system,
// so a failure or a kill leaves the destination as it was.
#include <cerrno>
#include <string>

#include "engine/copy_executor.h"
#include "engine/error_path.h"
#include "util/strings_table.h"

namespace marigold {

namespace {

// Byte progress is worth showing only this often; a proxy may redraw on every call.
constexpr auto kBytesUpdateInterval = std::chrono::milliseconds(250);

// The parent on the written side "exists" when it is a folder or a link to one (a task root).
bool IsFolderOrLink(const FsResult<ItemAttributes>& attributes) {
  return attributes && (attributes.Value().IsFolder() || attributes.Value().kind == ItemKind::kSymlink);
}

}  // namespace

bool CopyExecutor::QLCreateFolder(const std::string& folder, bool sideA) {
  FileSystem& fs = mContext.fs;
  RunState& state = mContext.state;
  const std::string parent = ParentFolderOf(folder);
  if (!IsFolderOrLink(fs.GetAttributes(parent))) {
    if (IsInsideDeletedItem(parent)) return true;
    return ReportError({GLS("Can't create the folder"), " ", Quoted(folder), "\r",
                        GLS("Can't find the parent destination folder.")});
  }
  auto existing = fs.GetAttributes(folder);
  if (existing) {
    // Someone made it since the scan: the walk fills it in all the same.
    if (existing.Value().IsFolder()) return true;
    return ReportChanged(folder);
  }
  FsStatus made = fs.CreateFolder(folder, kNewFolderMode, true);
  if (!made)
    return ReportError({GLS("Can't create the folder"), " ", Quoted(folder), "\r",
                        FailureDescription(made.Error(), GLS("Can't create the folder"))});
  ++state.Side(sideA).FoldersCreated;
  AddSuccessLine(mWords.createdFolder, folder);
  mContext.services.folders->RemoveItemOKFromRestore(state, folder);
  return true;
}

bool CopyExecutor::QLDestParentExists(const std::string& dstParent, const std::string& src,
                                      const std::string& dst, bool& goToBail) {
  goToBail = false;
  if (FolderKnownReady(dstParent) || IsFolderOrLink(mContext.fs.GetAttributes(dstParent))) return true;
  if (IsInsideDeletedItem(dstParent)) {
    goToBail = true;
    return true;
  }
  return ReportError({GLS("Can't copy the file"), " ", Quoted(src), "\r", mWords.to, " ", Quoted(dst), "\r",
                      GLS("Can't find the parent destination folder.")});
}

bool CopyExecutor::QLCopyFile(const std::string& src, const std::string& dst, bool sideA,
                              const ItemAttributes* source) {
  RunState& state = mContext.state;
  const std::string parent = ParentFolderOf(dst);
  if (!FolderKnownReady(parent)) {
    if (MayChangeItemsIn(parent)) {
      RememberReadyFolder(parent);
    } else if (!mContext.services.folders->UnlockChain(state, parent, SideRoot(sideA), 1)) {
      return ReportError({GLS("Can't copy the file"), " ", Quoted(src), "\r", mWords.to, " ", Quoted(dst), "\r",
                          GLS("Insufficient privileges")});
    }
  }
  return RecordNewFile(src, dst, sideA, source, CopyData(src, dst, false, source));
}

bool CopyExecutor::RecordNewFile(const std::string& src, const std::string& dst, bool sideA,
                                 const ItemAttributes* source, const FsResult<CopyReport>& copied) {
  if (!copied) {
    const FsError& error = copied.Error();
    // A stop is the user's wish, not a failure to report; the copy has cleaned up after itself.
    if (error.problem == FsProblem::kStopped) return false;
    // Something took the name since the scan: it is not what was decided on.
    if (error.code == EEXIST) return ReportChanged(dst);
    return ReportError({GLS("Can't copy the file"), " ", Quoted(src), "\r", mWords.to, " ", Quoted(dst), "\r",
                        CopyFailureText(error)});
  }
  FinishCopy(src, source, dst, copied.Value().backupDateError);
  RunState& state = mContext.state;
  ++state.Side(sideA).FilesCopied;
  CountVisibility(sideA, dst);
  AddSuccessLine(mWords.copiedFile, src, mWords.to, dst);
  mContext.services.folders->RemoveItemOKFromRestore(state, dst);
  return true;
}

bool CopyExecutor::QLReplaceDestFile(const std::string& src, const std::string& dst, bool sideA,
                                     const ItemSnapshot& dstSnapshot) {
  return ReplaceChecked(src, dst, sideA, dstSnapshot, mContext.fs.GetAttributes(dst), nullptr);
}

bool CopyExecutor::ReplaceChecked(const std::string& src, const std::string& dst, bool sideA,
                                  const ItemSnapshot& dstSnapshot, const FsResult<ItemAttributes>& current,
                                  const ItemAttributes* source) {
  RunState& state = mContext.state;
  if (!current && !current.Error().IsMissing())
    return ReportError({GLS("Can't read the item"), " ", Quoted(dst), "\r",
                        FailureDescription(current.Error(), GLS("Can't read the item"))});
  if (!dstSnapshot.Matches(current ? ItemSnapshot::Of(current.Value()) : ItemSnapshot::Absent()))
    return ReportChanged(dst);
  const std::string parent = ParentFolderOf(dst);
  const bool locked = current && current.Value().isLocked;
  if ((locked || !MayChangeItemsIn(parent)) && !mContext.services.folders->UnlockChain(state, dst, SideRoot(sideA), 2))
    return ReportError({GLS("Can't replace the file"), " ", Quoted(dst), "\r", GLS("Insufficient privileges")});

  std::string errStr;
  if (!CheckFreeSpaceFor(src, parent, errStr))
    return ReportError({GLS("Can't replace the file"), " ", Quoted(dst), "\r", errStr});
  auto copied = CopyData(src, dst, true, source);
  if (!copied) {
    if (copied.Error().problem == FsProblem::kStopped) return false;
    return ReportError({GLS("Can't replace the file"), " ", Quoted(dst), "\r", mWords.withTheMostRecentFile, " ",
                        Quoted(src), "\r", CopyFailureText(copied.Error())});
  }
  FinishCopy(src, source, dst, copied.Value().backupDateError);
  ++state.Side(sideA).FilesReplaced;
  CountVisibility(sideA, dst);
  AddSuccessLine(mWords.replacedFile, dst, mWords.withTheMostRecentFile, src);
  // The new item carries its origin's lock; the old one's must not come back over it.
  mContext.services.folders->RemoveItemOKFromRestore(state, dst);
  return true;
}

CopyOptions CopyExecutor::TaskCopyOptions(const ItemAttributes* source) {
  CopyOptions options;
  options.sourceAttributes = source;
  options.backupDate = mContext.state.gStartSyncDateTimeUTC;
  options.hints = &mHints;
  options.keepRunning = &mContext.state.mIsCopying;
  return options;
}

FsResult<CopyReport> CopyExecutor::CopyData(const std::string& src, const std::string& dst, bool replace,
                                            const ItemAttributes* source) {
  CopyOptions options = TaskCopyOptions(source);
  options.replaceExisting = replace;
  options.progress = [this](std::uint64_t copied, std::uint64_t total) {
    auto now = std::chrono::steady_clock::now();
    if (now - mLastBytesUpdate >= kBytesUpdateInterval) {
      mLastBytesUpdate = now;
      mContext.proxy.UpdateBytesCopied(copied, total);
    }
    return true;
  };
  return mContext.fs.CopyItem(src, dst, options);
}

std::string CopyExecutor::CopyFailureText(const FsError& error) const {
  if (error.operation == "remove the replaced item")
    return GLS("Can't remove the old destination file") + "\r" + FailureDescription(error, GLS("Can't copy the file"));
  return FailureDescription(error, GLS("Can't copy the file"));
}

bool CopyExecutor::FolderKnownReady(const std::string& folder) const {
  return !mReadyFolder.empty() && folder == mReadyFolder &&
         mContext.state.gItemsDeleted.size() == mReadyDeletions;
}

void CopyExecutor::RememberReadyFolder(const std::string& folder) {
  mReadyFolder = folder;
  mReadyDeletions = mContext.state.gItemsDeleted.size();
}

bool CopyExecutor::MayChangeItemsIn(const std::string& folder) {
  FsStatus access = mContext.fs.CheckAccess(folder, kAccessWrite | kAccessSearch);
  // A missing folder is for the operation itself to report, with its own words.
  return access || access.Error().IsMissing();
}

}  // namespace marigold
