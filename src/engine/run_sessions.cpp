// The sessions and tasks of a run: how each session's tasks are found, scanned and recorded, and
// how each recorded task is copied.
#include <algorithm>
#include <utility>

#include "model/document_model.h"
#include "engine/copy_mode.h"
#include "engine/empty_root_guard.h"
#include "engine/privilege_messages.h"
#include "engine/run_driver.h"
#include "options/session_switches.h"
#include "engine/task_records.h"
#include "util/strings_table.h"

namespace marigold {
namespace {

std::string TaskHeading(const SessionSwitches& s, const std::string& source, const std::string& dest) {
  const char* start = s.gIsSyncOn ? (s.gIsExactOn ? "Start Exact Synchronization between:\nSource: "
                                                  : "Start Synchronization between:\nSource: ")
                                  : (s.gIsExactOn ? "Start Exact Backup between:\nSource: "
                                                  : "Start Backup between:\nSource: ");
  return GLS(start) + source + "\n" + GLS("Destination") + ": " + dest;
}

PlistArray PathList(const std::vector<std::string>& paths) {
  PlistArray list;
  list.reserve(paths.size());
  for (const std::string& path : paths) list.emplace_back(path);
  return list;
}

}  // namespace

bool RunDriver::ScanOneSession(std::int64_t index) {
  PurgeBeforeScanOneSession(index);
  bool result = false;
  const PlistDict* session = Session(index);
  if (session != nullptr && mState.session.gIsMultiOn) {
    result = ScanMultiTask(*session);
  } else if (session != nullptr) {
    const PlistDict* console = session->GetDict("consoleDict");
    mState.gSourceFolder = console ? console->GetString("topFolder") : "";
    mState.gDestFolder = console ? console->GetString("bottomFolder") : "";
    if (!CheckIfCreateSubDestFolder()) {
      // Without its dated sub-folder the task is skipped; the session itself did not fail.
      result = true;
    } else {
      mState.gTotMulti = 1;
      mState.gTotMultiDone = 0;
      result = ScanOneTask(index, 0);
    }
  }
  PurgeAfterScanOneSession(index);
  return result;
}

bool RunDriver::ScanMultiTask(const PlistDict& session) {
  mExecutiveMultiArray = mContext.services.tasks->ExecutiveMultiArray(mState, session);
  mState.gTotMulti = static_cast<std::int64_t>(mExecutiveMultiArray.size());
  mState.gTotMultiDone = 0;
  bool result = true;
  for (std::int64_t i = 0; i < mState.gTotMulti; ++i) {
    const PlistDict* row = mExecutiveMultiArray[static_cast<std::size_t>(i)].AsDict();
    const std::string source = row ? row->GetString("source") : "";
    const std::string destination = row ? row->GetString("destination") : "";
    if (source.empty() || destination.empty()) continue;
    mState.gSourceFolder = source;
    mState.gDestFolder = destination;
    if (CheckIfCreateSubDestFolder()) {
      mState.gTotMultiDone = i + 1;
      result = ScanOneTask(mCurrentSessionIndex, i);
    }
    if (!mState.IsRunOn()) break;
  }
  return result;
}

bool RunDriver::CheckIfCreateSubDestFolder() {
  if (!mState.session.gCreateDestFolder) return true;
  std::optional<std::string> name = mContext.services.tasks->GetDestSubFolderName(mState, mState.gSourceFolder);
  if (!name || name->empty()) return false;
  // A "/" in a date format would make two levels of folders; the name keeps it as ":".
  std::replace(name->begin(), name->end(), '/', ':');
  mState.gDestFolder = ChildPath(mState.gDestFolder, *name);
  if (mContext.fs.GetAttributes(mState.gDestFolder)) return true;
  // A dry run creates nothing: its scan sees the sub-folder as missing, which is what the run
  // would find right after creating it.
  if (mState.mDryRun) return true;
  return mContext.fs.CreateFolder(mState.gDestFolder, 0777, true).Ok();
}

bool RunDriver::ScanOneTask(std::int64_t sessionIndex, std::int64_t taskIndex) {
  RunState& s = mState;
  FileSystem& fs = mContext.fs;
  PurgeBeforeScanOneTask();
  if (!mContext.services.folders->FoldersAreValid(s, s.gSourceFolder, s.gDestFolder, 0)) return false;
  mContext.proxy.SetTaskComment(TaskHeading(s.session, s.gSourceFolder, s.gDestFolder));

  TaskTree tree;
  tree.sessionIndex = sessionIndex;
  tree.taskIndex = taskIndex;
  auto rootA = fs.GetAttributes(s.gSourceFolder);
  auto rootB = fs.GetAttributes(s.gDestFolder);
  const bool folderA = rootA && rootA.Value().IsReallyFolder();
  const bool folderB = rootB && rootB.Value().IsReallyFolder();
  // Two roots that are not folders are a pair of single files, scanned as the one item of their
  // parent folders. When neither root exists at all, the scan reports the missing folders.
  if (!folderA && !folderB && (rootA || rootB)) {
    ScanNode item;
    item.name = std::string(LastPathComponent(s.gSourceFolder));
    item.copyMode = kCopyModeNothing;
    tree.root.subItems.push_back(std::move(item));
    s.gSourceFolder = ParentFolderOf(s.gSourceFolder);
    s.gDestFolder = ParentFolderOf(s.gDestFolder);
  }

  if (!s.session.mSkipCheckPermissions) {
    const int problem = mContext.services.folders->CheckPrivilegesOnFiles(s, s.gSourceFolder, s.gDestFolder, 1);
    if (problem != 0) {
      // Counted, and reported when someone is there to read it; the other tasks still run. Missing
      // rights are usually the destination's (it is written), a lock the source's.
      mErrors.RecordItemError({PrivilegeProblemText(problem, problem == 1 ? s.gDestFolder : s.gSourceFolder,
                                                   mContext.services.folders->LastPrivilegeProblem())});
      PurgeAfterScanOneTask(taskIndex);
      mLogTaskArray.back().AsDict()->Set("taskSkipped", 1);
      return true;
    }
  }

  tree.source = s.gSourceFolder;
  tree.dest = s.gDestFolder;
  tree.gIsSyncOn = s.session.gIsSyncOn;
  tree.gIsMoveToTrash = s.session.gIsMoveToTrash;
  tree.root.copyMode = kCopyModeNothing;
  tree.root.hasSubItems = true;
  s.mainSourceFolderBackupDate = fs.GetBackupDate(s.gSourceFolder);
  s.mainDestFolderBackupDate = fs.GetBackupDate(s.gDestFolder);
  s.gCompareExactSyncAtIndex = mContext.services.index->ExactSyncFileExists(s, 1);
  mContext.services.folders->MakeItemsToDontCopyList(s);

  const bool result = mScanner.ScanSingleFolder(tree.root, s.gSourceFolder, s.gDestFolder, true);
  if (result && !tree.root.subItems.empty() && !EmptyRootAllowsTask(mContext, mErrors, tree)) {
    // Neither the index nor the roots' backup dates may record a side that was not really there.
    PurgeAfterScanOneTask(taskIndex);
    mLogTaskArray.back().AsDict()->Set("taskSkipped", 1);
    return true;
  }
  if (result && !tree.root.subItems.empty()) {
    const int rootMode = tree.root.copyMode;
    s.runTaskTrees.push_back(std::move(tree));
    s.runExactIndexAdditions.emplace_back();
    if (rootMode == kCopyModeMetadataBToA) ++s.tallies.runMetadataBToA;
    if (rootMode == kCopyModeMetadataAToB) ++s.tallies.runMetadataAToB;
    if (rootMode == kCopyModeNothing) {
      ++s.tallies.runNothing;
    } else {
      ++s.gItemsToDo;
    }
  }
  PurgeAfterScanOneTask(taskIndex);
  return result;
}

void RunDriver::PurgeBeforeScanOneSession(std::int64_t index) {
  RunState& s = mState;
  mCurrentSessionIndex = index;
  s.sessionIndex = index;
  mLogTaskArray.clear();
  mExecutiveMultiArray.clear();
  s.gIsOnError = mPreferences.GetInt("prefOnError", 3);
  const PlistDict* session = Session(index);
  if (session == nullptr) return;
  // A dry run only looks: the session's scripts could change what it is looking at.
  if (!mState.mDryRun) mContext.services.hooks->ExecuteAppleScript(s, *session, 1);
  ReadSessionSwitches(*session, s.session);
  if (s.IsRunOn()) mContext.services.hooks->MountAllVolumesForSession(s, *session);
  mSessionLogText += std::exchange(s.gDetailedLogText, {});
  mSessionErrors += std::exchange(s.gTotError, 0);
  PurgeBeforeScanAndCopyOneSession(index);
}

void RunDriver::PurgeBeforeScanAndCopyOneSession(std::int64_t index) {
  mState.sessionIndex = index;
  const PlistDict* session = Session(index);
  if (session == nullptr) return;
  ReadSessionSwitches(*session, mState.session);
  ReadTaskSettings(*session, mState.session);
  ReadConflictRules(*session, mState.session);
  mContext.services.filter->SessionStarts(mState, *session);
}

void RunDriver::PurgeAfterScanOneSession(std::int64_t index) {
  AddToLastTaskRecord(mLogTaskArray, mSessionLogText, mSessionErrors);
  PlistDict record{{"sessionIndex", index}, {"logTaskArray", std::move(mLogTaskArray)}};
  mLogTaskArray.clear();
  if (const PlistDict* session = Session(index)) {
    if (mState.session.gIsFilterOn) record.Set("executiveFilterArray", ExecutiveFilterArray(*session));
    if (mState.session.gIsExcludeOn) record.Set("executiveExcludeArray", ExecutiveExcludeArray(*session));
    if (mState.session.gIsMultiOn) record.Set("executiveMultiArray", mExecutiveMultiArray);
  }
  mState.logSessionArray.push_back(std::move(record));
}

void RunDriver::PurgeBeforeScanOneTask() {
  RunState& s = mState;
  s.scan = {};
  s.gItemsToDo = 0;
  s.gConflictsSkipped = 0;
  s.gTotError = std::exchange(mSessionErrors, 0);
  s.gDetailedLogText = std::exchange(mSessionLogText, {});
  s.restoreBackupDateArray.clear();
  s.gCompareExactSyncAtIndex = false;
  s.mainSourceFolderBackupDate.reset();
  s.mainDestFolderBackupDate.reset();
  s.bootItemsToDontCopyArray.clear();
  s.bootFoldersToCopyEmptyArray.clear();
}

void RunDriver::PurgeAfterScanOneTask(std::int64_t taskIndex) {
  RunState& s = mState;
  mLogTaskArray.push_back(MakeTaskRecord(taskIndex, s));
  s.gDetailedLogText.clear();
  s.restoreBackupDateArray.clear();
  s.tallies.runItemsToDo += s.gItemsToDo;
  s.gGlobalItemsScanned +=
      s.scan.gAFoldersScanned + s.scan.gAFilesScanned + s.scan.gBFoldersScanned + s.scan.gBFilesScanned;
  s.gGlobalConflictsSkipped += s.gConflictsSkipped;
}

void RunDriver::PurgeBeforeCopyOneTask() {
  RunState& s = mState;
  s.gA = {};
  s.gB = {};
  s.gItemsToDo = 0;
  s.gTotError = 0;
  s.gDetailedLogText.clear();
  s.gTrashDetailedLogText.clear();
}

void RunDriver::CopyOneTask(std::int64_t sessionIndex, PlistDict& record) {
  RunState& s = mState;
  const std::int64_t taskIndex = record.GetInt("taskIndex");
  for (std::size_t i = 0; i < s.runTaskTrees.size() && s.IsRunOn(); ++i) {
    TaskTree& tree = s.runTaskTrees[i];
    if (tree.sessionIndex != sessionIndex || tree.taskIndex != taskIndex) continue;
    s.gSourceFolder = tree.source;
    s.gDestFolder = tree.dest;
    if (s.gSourceFolder.empty() || s.gDestFolder.empty()) continue;
    mContext.proxy.ShowMainFolders(s.gSourceFolder, s.gDestFolder);
    mRefresher.ResetLastShown();
    mRefresher.UpdateItemsToDoField();
    mRefresher.Start(mUpdateInterval);
    mExecutor.CopyItems(tree.root.subItems, s.gSourceFolder, s.gDestFolder, false);
    mRefresher.Stop();
    mRefresher.UpdateItemsToDoField();
    if (tree.root.copyMode == kCopyModeMetadataBToA || tree.root.copyMode == kCopyModeMetadataAToB) {
      const bool toA = tree.root.copyMode == kCopyModeMetadataBToA;
      const std::string& from = toA ? tree.dest : tree.source;
      const std::string& to = toA ? tree.source : tree.dest;
      mContext.fs.CopyMetadata(from, to);
      mExecutor.SetAttrsAfterCopy(from, to, s.gStartSyncDateTimeUTC);
    }
    if (s.session.gIsSyncOn && s.session.gIsExactOn) {
      record.Set("addToExactIndexArray", PathList(s.runExactIndexAdditions[i]));
    }
  }
}

void RunDriver::PurgeAfterCopyOneTask(PlistDict& record) {
  // Blessing a copied system disk needs the boot-info file, which never exists here.
  StoreCopyCounters(mState, record);
  AddCopyCounters(mCopyTotals, mState.gA);
  AddCopyCounters(mCopyTotals, mState.gB);
  mState.gDetailedLogText.clear();
}

void RunDriver::PurgeAfterCopyOneSession(PlistDict& sessionRecord) {
  const PlistDict* session = Session(sessionRecord.GetInt("sessionIndex"));
  if (session == nullptr || !mState.IsRunOn() || mState.mDryRun) return;
  mState.gDetailedLogText.clear();
  mState.gTotError = 0;
  mContext.services.hooks->ExecuteAppleScript(mState, *session, 2);
  if (PlistArray* tasks = sessionRecord.GetArray("logTaskArray"))
    AddToLastTaskRecord(*tasks, mState.gDetailedLogText, mState.gTotError);
}

}  // namespace marigold
