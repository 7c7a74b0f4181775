// The run: sessions and tasks scanned into trees, previewed, copied, then the index, the backup
// dates and the log. ExecuteSyncBackup runs on the worker thread; everything a person sees goes
// through the proxy.
//
// Order of a run: set-up; for each session (one, or every session for "All Sessions") the
// before-script, the volumes and the scan of each task; the preview (a user run only); the copy,
// session by session and task by task, each session ending with its after-script; then, unless
// the user pressed Stop, the exact-sync index and the backup dates of every task's roots; the
// volumes are unmounted; the log is made (not after a cancelled preview); the conclusion.
// The stop flag is polled between sessions, tasks and items; every tear-down phase still runs.
#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "engine/copy_executor.h"
#include "engine/engine_context.h"
#include "engine/error_path.h"
#include "engine/progress_interval.h"
#include "engine/scanner.h"

namespace marigold {

// A run started from the command line without anyone to answer: no preview, no dialogs, every
// conflict that would be asked about is skipped, and no timer entry is marked done.
inline constexpr int kExecutedByCommandLine = 5;

// What the front end does once the run has concluded.
enum class AfterRunAction {
  kNone,
  kShutDown,   // prefShutDown, and the user did not press Stop
  kQuit,       // prefQuit, and the user did not press Stop
  kTerminate,  // the user quit the application during the run
};

class RunDriver {
 public:
  // `document` is the session document; `preferences` the preferences dictionary (a run may use
  // a copy with overrides). Both must outlive the driver.
  RunDriver(PlistDict& document, const PlistDict& preferences, FileSystem& fs, AppkitProxy& proxy,
            RunServices& services, const RunSeams& seams = {});
  RunDriver(const RunDriver&) = delete;
  RunDriver& operator=(const RunDriver&) = delete;

  // The whole run for the session at `sessionIndex` (or "All Sessions": the session count + 1),
  // started by `executedBy` (ExecutedBy or kExecutedByCommandLine). Returns when the run has
  // concluded. Call on the worker thread; one run at a time.
  void ExecuteSyncBackup(std::int64_t sessionIndex, int executedBy);
  // Asks a running run to stop, as the Stop button does (any thread; safe in a signal handler).
  void Stop();

  // A dry run scans and keeps the trees (scannedTrees) but copies nothing, runs no script,
  // creates no sub-folder, writes no index, sets no date and makes no log.
  void SetDryRun(bool dryRun) { mState.mDryRun = dryRun; }
  // Called on the worker thread with the message of every error the run records.
  void SetErrorObserver(std::function<void(const std::string&)> observer);

  // --- after a run --------------------------------------------------------------------------
  // The scan result of the run: the result of the last task scanned. False means nothing was
  // copied.
  bool scanSucceeded() const { return mScanSucceeded; }
  // The user cancelled the preview: nothing was copied and no log was made.
  bool previewCancelled() const { return mPreviewCancelled; }
  // The copy counters of every task added up, side A and side B together.
  const SideCopyCounters& copyTotals() const { return mCopyTotals; }
  // The trees a dry run scanned (empty after a real run, whose trees are dropped at its end).
  std::vector<TaskTree>& scannedTrees() { return mScannedTrees; }
  AfterRunAction afterRunAction() const { return mAfterRunAction; }

  RunState& state() { return mState; }

 private:
  // --- phases (run_driver.cpp) --------------------------------------------------------------
  void PurgeBeforeWholeSyncBackup(std::int64_t sessionIndex, int executedBy);
  bool ScanAllSessions();
  bool MainCopy();
  void PurgeBeforeMainCopy();
  void PurgeAfterWholeSyncBackup();
  void ConcludeWholeSyncBackup();
  AfterRunAction DecideAfterRunAction() const;
  // Carries a Stop asked from another thread into the run's state.
  void NoteStopRequest();

  // --- sessions and tasks (run_sessions.cpp) ------------------------------------------------
  bool ScanOneSession(std::int64_t index);
  bool ScanMultiTask(const PlistDict& session);
  bool CheckIfCreateSubDestFolder();
  bool ScanOneTask(std::int64_t sessionIndex, std::int64_t taskIndex);
  void PurgeBeforeScanOneSession(std::int64_t index);
  void PurgeAfterScanOneSession(std::int64_t index);
  void PurgeBeforeScanAndCopyOneSession(std::int64_t index);
  void PurgeBeforeScanOneTask();
  void PurgeAfterScanOneTask(std::int64_t taskIndex);
  void PurgeBeforeCopyOneTask();
  void PurgeAfterCopyOneTask(PlistDict& taskRecord);
  void PurgeAfterCopyOneSession(PlistDict& sessionRecord);
  // Copies the task of `record` (its trees) in the session being copied.
  void CopyOneTask(std::int64_t sessionIndex, PlistDict& record);
  const PlistDict* Session(std::int64_t index) const;

  PlistDict& mDocument;
  const PlistDict& mPreferences;
  RunState mState;
  ErrorPath mErrors;
  EngineContext mContext;
  Scanner mScanner;
  CopyExecutor mExecutor;
  ItemsToDoRefresher mRefresher;

  std::atomic<bool> mStopRequested{false};
  bool mScanSucceeded = false;
  bool mPreviewCancelled = false;
  AfterRunAction mAfterRunAction = AfterRunAction::kNone;
  std::int64_t mCurrentSessionIndex = 0;
  PlistArray mLogTaskArray;         // the task records of the session being scanned
  PlistArray mExecutiveMultiArray;  // the usable multiple-list rows of that session
  double mUpdateInterval = 0;       // seconds between two refreshes of the items-to-do count
  SideCopyCounters mCopyTotals;
  std::vector<TaskTree> mScannedTrees;
  // What the session's scripts and volumes logged and counted before its first task: it joins
  // that task's record.
  std::string mSessionLogText;
  std::int64_t mSessionErrors = 0;
};

}  // namespace marigold
