// The copy executor: performs a task's scan tree node by node (create, copy, replace, delete or
// trash, metadata only), makes dates and attributes agree, counts and logs each action, and
// reports each failure without stopping the run. Runs on the worker thread.
//
// What it promises about the disk: a destination file is replaced by renaming a complete copy
// over it, so a run killed at any instant leaves the old or the new file, never a mixture; the
// only leftovers of such a run bear the engine's temporary names (IsTemporaryName). Before an
// item is overwritten or deleted it is compared with what the scan saw; a changed item is left
// alone and reported.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <initializer_list>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "engine/copy_log_lines.h"
#include "engine/engine_context.h"

namespace marigold {

class CopyPipeline;

// A new folder is writable by its owner alone until its contents are in; the walk then gives it
// the origin's mode.
inline constexpr std::uint32_t kNewFolderMode = 0700;

// The folder holding `path` ("/a" for "/a/b"; "/" for "/a").
std::string ParentFolderOf(const std::string& path);

class CopyExecutor {
 public:
  explicit CopyExecutor(EngineContext& context);
  ~CopyExecutor();

  // Performs `nodes`, the items of the folder pair folderA / folderB. `deleteParent`: the nodes
  // are the contents of a folder being deleted. False when any node failed.
  bool CopyItems(std::vector<ScanNode>& nodes, const std::string& folderA, const std::string& folderB,
                 bool deleteParent);
  // Performs one node whose paths are a and b. A case-only rename (modes 8 and 9) updates the
  // node's names so that its children are found under the new name.
  bool CopySource(const std::string& a, const std::string& b, ScanNode& node, bool deleteParent);

  // --- the single actions; `sideA` is the side that is written or deleted on ----------------

  // Creates `folder` (its parent must exist, unless the parent was deleted earlier in the run:
  // then nothing is done and the call succeeds). An existing folder is left as it is.
  bool QLCreateFolder(const std::string& folder, bool sideA);
  // Whether `dstParent` exists; when it is missing because it was deleted in this run, `goToBail`
  // is set and the call succeeds (nothing is to be copied). Reports the missing parent otherwise.
  bool QLDestParentExists(const std::string& dstParent, const std::string& src, const std::string& dst,
                          bool& goToBail);
  // Copies `src` (a file, link or package) to `dst`, which must not exist. `source`, when given,
  // describes `src` as just read, so the copy need not read it again.
  bool QLCopyFile(const std::string& src, const std::string& dst, bool sideA,
                  const ItemAttributes* source = nullptr);
  // Replaces `dst` with a copy of `src` atomically, after checking that `dst` is still what the
  // scan saw (`dstSnapshot`) and that the volume has room for the new copy.
  bool QLReplaceDestFile(const std::string& src, const std::string& dst, bool sideA,
                         const ItemSnapshot& dstSnapshot);
  // Removes or trashes a file, link or package. Inside a folder that is trashed as a whole
  // (`isParentToDelete` with the trash on) the item is only checked, counted and logged: it
  // travels to the trash with its folder.
  bool QLDeleteFile(const std::string& path, bool sideA, const ItemAttributes& attributes,
                    bool isParentToDelete);
  // Removes (it must be empty by now) or trashes a folder; see QLDeleteFile for a folder inside a
  // folder that is trashed as a whole.
  bool QLDeleteFolder(const std::string& path, bool sideA, const ItemAttributes& attributes,
                      bool isParentToDelete);
  // Gives `dst` the name (when it differs in case only) and the metadata of `src`.
  // `renamedTo` receives the new path of `dst` when it was renamed.
  bool QLCopySingleMetadataOnly(const std::string& src, const std::string& dst, bool sideA,
                                std::string* renamedTo = nullptr);

  // --- utilities ------------------------------------------------------------------------------

  // Makes `to`'s mode, ownership, user attributes, access lists and times agree with `from`'s,
  // with `modifDate` as the modification date. Failures go to the system log only.
  bool CopyFolderAttributes(const std::string& from, const std::string& to, const FileTime& modifDate);
  // The finishing touches of a copy: the backup date `backupDate` (Unix seconds) and the origin's
  // locked flag. The content, mode, ownership and times travel with the copy itself. Failures go
  // to the system log only; false when one happened.
  bool SetAttrsAfterCopy(const std::string& origin, const std::string& copy, std::int64_t backupDate);
  // Whether the volume of `destFolder` has room for `item`; otherwise `errStr` holds the message
  // with the free and the required byte counts.
  bool CheckFreeSpaceFor(const std::string& item, const std::string& destFolder, std::string& errStr);
  // The bytes the item will take once copied (a folder counts everything inside it).
  std::uint64_t NewItemSize(const std::string& item);
  // A rename temporary (TemporaryKind::kRename) that no item in `folder` holds; nothing when
  // none was found.
  std::optional<std::string> FindUniqueNameInFolder(const std::string& folder);

 private:
  // The nodes' own performing and walking, and the folder-date agreement after a walk.
  bool WalkItems(std::vector<ScanNode>& nodes, const std::string& folderA, const std::string& folderB,
                 bool deleteParent);
  // The node's two paths in the folders folderA / folderB, a followed link replaced by its target.
  void NodePaths(const ScanNode& node, const std::string& folderA, const std::string& folderB, std::string& a,
                 std::string& b);
  // New files and folders whose data may travel on helper threads (see CopyPipeline): true
  // when the node was handed in; false leaves it to PerformNode.
  bool TryPipelined(const ScanNode& node, const std::string& a, const std::string& b);
  bool PipelineNewFolder(const std::string& folder, bool sideA);
  void PipelineNewFile(const std::string& src, const std::string& dst, bool sideA, const ItemAttributes& source);
  // Everything handed to the pipeline is carried out and recorded.
  void Settle();
  // Runs `record` after what the pipeline holds, or now.
  void AfterPending(std::function<void()> record);
  void CountItemDone();
  bool PerformNode(ScanNode& node, const std::string& a, const std::string& b, bool deleteParent);
  bool DeleteFolderWithContents(ScanNode& node, const std::string& a, const std::string& b,
                                bool deleteParent);
  void MakeFolderDatesAgree(int mode, const std::string& a, const std::string& b,
                            const std::optional<FileTime>& dateA, const std::optional<FileTime>& dateB);
  std::optional<FileTime> ModificationDate(const std::string& path);

  // The pieces of the actions.
  // QLReplaceDestFile with the destination as just read (`current`) and the source as described.
  bool ReplaceChecked(const std::string& src, const std::string& dst, bool sideA, const ItemSnapshot& dstSnapshot,
                      const FsResult<ItemAttributes>& current, const ItemAttributes* source);
  // What every copy of the task carries and obeys: the source as described, the backup date, what
  // the task learnt of its volumes, and Stop.
  CopyOptions TaskCopyOptions(const ItemAttributes* source);
  FsResult<CopyReport> CopyData(const std::string& src, const std::string& dst, bool replace,
                                const ItemAttributes* source);
  std::string CopyFailureText(const FsError& error) const;
  // Counts and logs a new file's copy, or reports why it failed; false when it failed.
  bool RecordNewFile(const std::string& src, const std::string& dst, bool sideA, const ItemAttributes* source,
                     const FsResult<CopyReport>& copied);
  // The finishing touches once a copy stored the backup date itself (`backupDateError` tells how).
  bool FinishCopy(const std::string& src, const ItemAttributes* source, const std::string& copy,
                  int backupDateError);
  void LogBackupDateFailure(const std::string& copy, int code);
  bool SetAttrsAfterCopy(const ItemAttributes& origin, const std::string& copy, std::int64_t backupDate);
  // The last destination folder found present and open to changes stays known so until the walk
  // leaves it (its modes may then be restored) or something is deleted.
  bool FolderKnownReady(const std::string& folder) const;
  void RememberReadyFolder(const std::string& folder);
  void ForgetReadyFolder() { mReadyFolder.clear(); }
  bool ReportChanged(const std::string& path);
  bool ItemStillAsScanned(const std::string& path, const ItemSnapshot& snapshot);
  bool MayChangeItemsIn(const std::string& folder);
  bool IsInsideDeletedItem(const std::string& path) const;
  const std::string& SideRoot(bool sideA) const;
  void CountVisibility(bool sideA, const std::string& path);
  void AddSuccessLine(std::string_view word, const std::string& path, std::string_view secondWord = {},
                      const std::string& otherPath = {});
  void AddTrashLine(std::string_view word, const std::string& path);
  bool ReportError(std::initializer_list<std::string_view> parts);
  void FoldInnerTrashCounts(bool sideA);
  void ResetInnerTrash();
  void LogAttributeFailure(const char* what, const std::string& path, int code);

  EngineContext& mContext;
  CopyLogWords mWords;
  int mDepth = 0;  // how deep CopyItems is in the tree
  // What the items inside a folder being trashed as a whole add up to, until the folder itself
  // has gone to the trash (then they join the side's trashed counters) or has failed.
  SideCopyCounters mInnerTrashA;
  SideCopyCounters mInnerTrashB;
  bool mBackupDateRefused = false;  // the volume keeps no backup dates: said once in the log
  CopyHints mHints;                 // what this task's copies learnt about its volumes
  std::string mReadyFolder;         // see FolderKnownReady
  std::size_t mReadyDeletions = 0;  // items deleted in the run when it was found so
  std::unique_ptr<CopyPipeline> mPipeline;  // made at the first item it can carry
  bool mPipelineFailed = false;             // an item carried by the pipeline failed in this task
  std::chrono::steady_clock::time_point mLastBytesUpdate;  // byte progress is shown a few times a second
};

}  // namespace marigold
