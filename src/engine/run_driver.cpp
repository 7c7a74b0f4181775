#include "engine/run_driver.h"

#include <unistd.h>

#include <chrono>
#include <cmath>

#include "model/document_model.h"
#include "options/session_switches.h"
#include "engine/preview_editor.h"
#include "engine/task_records.h"
#include "util/quillon_additions.h"

namespace marigold {

RunDriver::RunDriver(PlistDict& document, const PlistDict& preferences, FileSystem& fs, AppkitProxy& proxy,
                     RunServices& services, const RunSeams& seams)
    : mDocument(document),
      mPreferences(preferences),
      mErrors(mState, proxy, preferences),
      mContext{mState, fs, proxy, services, mErrors, preferences, *seams.clock, *seams.systemLog},
      mScanner(mContext),
      mExecutor(mContext),
      mRefresher(proxy, mState.tallies) {
  services.BindRoles(mContext);
}

void RunDriver::SetErrorObserver(std::function<void(const std::string&)> observer) {
  mErrors.SetErrorObserver(std::move(observer));
}

void RunDriver::Stop() {
  mStopRequested.store(true);
  mState.mIsCopying.store(false);
}

void RunDriver::NoteStopRequest() {
  if (!mStopRequested.load()) return;
  mState.mUserPressedStop = true;
  mState.mIsCopying = false;
}

void RunDriver::ExecuteSyncBackup(std::int64_t sessionIndex, int executedBy) {
  mScanSucceeded = false;
  mPreviewCancelled = false;
  mAfterRunAction = AfterRunAction::kNone;
  mCopyTotals = {};
  mScannedTrees.clear();

  PurgeBeforeWholeSyncBackup(sessionIndex, executedBy);
  const bool scanned = IsAllSessions(mDocument, sessionIndex) ? ScanAllSessions() : ScanOneSession(sessionIndex);
  mScanSucceeded = scanned;
  NoteStopRequest();

  if (mState.IsRunOn() && scanned && !mState.mDryRun) {
    const bool preview = !mState.runTaskTrees.empty() && mState.mExecutedBy == kExecutedByUser &&
                         mPreferences.IsFlagOn("prefPreview");
    if (preview) {
      PreviewEditor editor(mState.runTaskTrees, mState.tallies, mState.runExactIndexAdditions, mContext.fs);
      editor.SetWindowTitle(PreviewWindowTitle(IsAllSessions(mDocument, sessionIndex), mState.session));
      mPreviewCancelled = !mContext.proxy.ShowPreview(editor);
      // Stopping in the preview is the user's Stop: nothing is copied, indexed or dated.
      if (mPreviewCancelled) mState.mUserPressedStop = true;
    }
    if (!mPreviewCancelled) {
      if (mState.tallies.runItemsToDo > 0) PurgeBeforeMainCopy();
      MainCopy();
    }
  }
  NoteStopRequest();
  if (mState.mDryRun) mScannedTrees = std::move(mState.runTaskTrees);

  PurgeAfterWholeSyncBackup();
  if (!mPreviewCancelled && !mState.mDryRun) mContext.services.log->MakeLog(mState);
  ConcludeWholeSyncBackup();
  mAfterRunAction = DecideAfterRunAction();
  mStopRequested = false;
}

void RunDriver::PurgeBeforeWholeSyncBackup(std::int64_t sessionIndex, int executedBy) {
  RunState& s = mState;
  s.mIsCopying = true;
  s.mUserPressedStop = false;
  s.gTerminateAfterSync = false;
  // A Stop asked before the worker got here still counts.
  NoteStopRequest();
  s.mExecutedBy = executedBy;
  s.mEuidIsRoot = ::geteuid() == 0;
  mCurrentSessionIndex = sessionIndex;

  const double now = mContext.clock.Now();
  s.gStartSyncDateTime = DateFromUnixSeconds(now);
  s.gStartSyncDateTimeUTC = static_cast<std::int64_t>(std::floor(now));
  s.gEndSyncDateTime = s.gStartSyncDateTime;

  s.runTaskTrees.clear();
  s.runExactIndexAdditions.clear();
  s.gItemsDeleted.clear();
  s.logSessionArray.clear();
  mUpdateInterval = 0;
  s.tallies.Reset();
  s.gGlobalItemsScanned = 0;
  s.gGlobalConflictsSkipped = 0;
  s.gGlobalError = 0;
  s.gAtLeastOneItemDone = false;
  s.gTrashDetailedLogText.clear();
  s.gDetailedLogText.clear();
  s.gTotError = 0;
  mSessionLogText.clear();
  mSessionErrors = 0;

  const std::int64_t logKind = mPreferences.GetInt("prefLogKind");
  s.gMakeDetailedLog = logKind == 2;
  s.gMakeErrorsLog = logKind == 3;
  const std::int64_t deltaField = mPreferences.GetInt("prefModificationDeltaField");
  s.gModificationDelta = mPreferences.IsFlagOn("prefModificationDelta") && deltaField > 0 ? deltaField : 0;
  mContext.proxy.RunStarted();
  if (!s.mDryRun) mContext.services.hooks->GetExecutiveAppleScripts(s, mDocument, sessionIndex);
}

bool RunDriver::ScanAllSessions() {
  bool result = false;
  const std::int64_t count = SessionCount(mDocument);
  for (std::int64_t index = 0; index < count; ++index) {
    result = ScanOneSession(index);
    if (!mState.IsRunOn()) break;
  }
  return result;
}

void RunDriver::PurgeBeforeMainCopy() {
  mState.tallies.runItemsTotal = mState.tallies.runItemsToDo.load();
  mUpdateInterval = ConsoleUpdateInterval(mState.tallies.runItemsTotal);
  mRefresher.ResetLastShown();
}

bool RunDriver::MainCopy() {
  for (PlistValue& sessionValue : mState.logSessionArray) {
    PlistDict* sessionRecord = sessionValue.AsDict();
    if (sessionRecord == nullptr) continue;
    const std::int64_t sessionIndex = sessionRecord->GetInt("sessionIndex");
    PurgeBeforeScanAndCopyOneSession(sessionIndex);
    std::int64_t tasksDone = 0;
    if (PlistArray* tasks = sessionRecord->GetArray("logTaskArray")) {
      for (PlistValue& taskValue : *tasks) {
        PlistDict* record = taskValue.AsDict();
        if (record == nullptr) continue;
        PurgeBeforeCopyOneTask();
        if (mState.IsRunOn()) {
          CopyOneTask(sessionIndex, *record);
          if (mState.IsRunOn()) ++tasksDone;
        }
        PurgeAfterCopyOneTask(*record);
      }
    }
    mState.gTotMultiDone = tasksDone;
    PurgeAfterCopyOneSession(*sessionRecord);
  }
  return true;
}

void RunDriver::PurgeAfterWholeSyncBackup() {
  RunState& s = mState;
  const double now = mContext.clock.Now();
  s.gEndSyncDateTime = DateFromUnixSeconds(now);
  s.runTaskTrees.clear();
  s.runExactIndexAdditions.clear();
  s.gItemsDeleted.clear();
  s.gGlobalError = 0;

  for (PlistValue& sessionValue : s.logSessionArray) {
    PlistDict* sessionRecord = sessionValue.AsDict();
    if (sessionRecord == nullptr) continue;
    const std::int64_t sessionIndex = sessionRecord->GetInt("sessionIndex");
    PurgeBeforeScanAndCopyOneSession(sessionIndex);
    std::int64_t sessionErrors = 0;
    if (PlistArray* tasks = sessionRecord->GetArray("logTaskArray")) {
      for (PlistValue& taskValue : *tasks) {
        PlistDict* record = taskValue.AsDict();
        if (record == nullptr) continue;
        // After a Stop the index and the dates would claim a run that did not finish; a dry run
        // claims nothing, and neither does a task that was skipped before its copy.
        const bool skipped = record->GetInt("taskSkipped") != 0;
        if (!s.mUserPressedStop && !mState.mDryRun && !skipped) {
          s.gSourceFolder = record->GetString("gSourceFolder");
          s.gDestFolder = record->GetString("gDestFolder");
          // The record carries what the index needs: "addToExactIndexArray" and
          // "restoreBackupDateArray". A failure to write it is one of the task's errors.
          if (s.session.gIsSyncOn && s.session.gIsExactOn) {
            s.gTotError = 0;
            s.gDetailedLogText.clear();
            mContext.services.index->WriteExactSyncIndex(s, *record, 2);
            record->Set("gTotError", record->GetInt("gTotError") + s.gTotError);
            record->Set("gDetailedLogText", record->GetString("gDetailedLogText") + s.gDetailedLogText);
            s.gDetailedLogText.clear();
          }
        }
        const std::int64_t errors = record->GetInt("gTotError");
        sessionErrors += errors;
        s.gGlobalError += errors;
        if (s.mUserPressedStop || mState.mDryRun || skipped) continue;
        // A volume that keeps no backup dates refuses them; the scan then reads "no date", which
        // is what the rules expect of such a volume.
        mContext.fs.SetBackupDate(s.gSourceFolder, s.gStartSyncDateTimeUTC);
        mContext.fs.SetBackupDate(s.gDestFolder, s.gStartSyncDateTimeUTC);
      }
    }
    if (const PlistDict* session = Session(sessionIndex)) {
      s.gDetailedLogText.clear();
      s.gTotError = 0;
      mContext.services.hooks->UnmountAllVolumesForSession(s, *session);
      sessionErrors += s.gTotError;
      s.gGlobalError += s.gTotError;
      if (PlistArray* tasks = sessionRecord->GetArray("logTaskArray"))
        AddToLastTaskRecord(*tasks, s.gDetailedLogText, s.gTotError);
    }
    sessionRecord->Set("gTotError", sessionErrors);
  }
}

void RunDriver::ConcludeWholeSyncBackup() {
  mContext.proxy.RunEnded();
  if (mPreferences.GetInt("prefBeepWhenDone") != 0) mContext.proxy.Beep();
  mState.mIsCopying = false;
}

AfterRunAction RunDriver::DecideAfterRunAction() const {
  // A dry run only looked: it neither shuts down nor quits.
  if (mState.mDryRun) return mState.gTerminateAfterSync ? AfterRunAction::kTerminate : AfterRunAction::kNone;
  const bool stopped = mState.mUserPressedStop;
  if (mPreferences.GetInt("prefShutDown") != 0 && !stopped) return AfterRunAction::kShutDown;
  if (mPreferences.GetInt("prefQuit") != 0 && !stopped) return AfterRunAction::kQuit;
  if (mState.gTerminateAfterSync) return AfterRunAction::kTerminate;
  return AfterRunAction::kNone;
}

const PlistDict* RunDriver::Session(std::int64_t index) const { return GetSessionDict(mDocument, index); }

}  // namespace marigold
