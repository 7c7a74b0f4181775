// The road of one run, for every front end (the command line, the desktop program, the timers):
// the checks that decide whether it can start, the confirmation, a snapshot of the document and
// the preferences, the services, the worker thread, Stop, and what is done after it (shutting the
// computer down). It returns one outcome value; front ends show it, they do not decide it.
//
// The run reads only its snapshot, so a window that edits the document, or a timer that marks its
// entry, never races the worker. One run at a time per controller.
#pragma once

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "app/app_paths.h"
#include "app/session_run_services.h"
#include "engine/appkit_proxy.h"
#include "engine/engine_context.h"
#include "engine/run_driver.h"
#include "logging/email_report.h"
#include "platform/file_system.h"
#include "platform/system_power.h"
#include "util/plist_value.h"

namespace marigold {

struct RunRequest {
  std::int64_t sessionIndex = 0;  // a session, or the "All Sessions" entry (count + 1)
  int executedBy = kExecutedByUser;
  bool dryRun = false;  // scan and report; change nothing
};

enum class RunEnding {
  kCompleted,         // the run went to its end (errors may have been counted)
  kStopped,           // the user (or a signal) pressed Stop
  kPreviewCancelled,  // the user stopped at the preview: nothing was copied, no log was made
  kNotConfirmed,      // the user said no to "Starting task:": nothing was done
  kCouldNotStart,     // nothing was run: see couldNotStartReason (no session, no folders)
  kScanFailed,        // the folders could not be scanned (the last task's scan failed): nothing was copied
};

// What the scan counted, by copy mode, over the whole run.
struct RunTallyCounts {
  std::int64_t runItemsTotal = 0;
  std::int64_t runToCopyAToB = 0;
  std::int64_t runToCopyBToA = 0;
  std::int64_t runToDelete = 0;
  std::int64_t runMetadataAToB = 0;
  std::int64_t runMetadataBToA = 0;
  std::int64_t runNothing = 0;
};

struct RunOutcome {
  RunEnding ending = RunEnding::kCompleted;
  std::string couldNotStartReason;
  std::int64_t errors = 0;
  std::int64_t conflictsSkipped = 0;
  std::int64_t itemsScanned = 0;
  SideCopyCounters copyTotals;  // side A and side B together
  RunTallyCounts tallies;
  std::vector<TaskTree> dryRunTrees;  // what a dry run found to do
  AfterRunAction afterRunAction = AfterRunAction::kNone;
  bool poweringOff = false;  // the computer was asked to power off
  // The run log's text and the file it was saved to, when a log is kept ("" otherwise).
  std::string logText;
  std::string logFilePath;
  // The log was to be mailed and at least one message did not go out (the system log says why).
  bool logMailFailed = false;

  bool Stopped() const { return ending == RunEnding::kStopped; }
};

class RunController {
 public:
  // `paths` gives the support folders (the exact-sync index lives there); `fs`, `proxy` and
  // `power` must outlive the controller.
  RunController(const AppPaths& paths, FileSystem& fs, AppkitProxy& proxy, SystemPower& power = SystemPowerControl(),
                const RunSeams& seams = {});
  ~RunController();
  RunController(const RunController&) = delete;
  RunController& operator=(const RunController&) = delete;

  // The main button's action: when a run is under way it asks it to stop and returns false.
  // Otherwise it checks that the run can start, confirms it (a user run, prefAskConfirmation on,
  // not a dry run), snapshots `document` and `preferences` and starts the worker; `finished` is
  // called once with the outcome, on the worker thread (or at once, on this thread, when the run
  // does not start). Returns true when a worker was started. Call from one thread (the GUI's or
  // the program's main thread); `finished` must hand the outcome over to that thread rather than
  // start the next run itself, since the worker cannot wait for its own end.
  bool TaskExecuteSyncOrBackup(const PlistDict& document, const PlistDict& preferences, const RunRequest& request,
                               std::function<void(RunOutcome)> finished);
  // Starts the run and waits for its outcome: the command line and the timer daemon use this.
  RunOutcome Run(const PlistDict& document, const PlistDict& preferences, const RunRequest& request);
  // Asks the run under way to stop, as the Stop button does. Any thread; async-signal-safe.
  void Stop();
  bool IsRunning() const { return mRunning.load(); }
  // Waits until the run under way (if any) has handed over its outcome.
  void Wait();

  // The run's services; later parts plug their roles in here before a run starts.
  SessionRunServices& services() { return mServices; }
  // How the log is mailed after a run (tests trust their own server's certificate). Call
  // between runs.
  void SetMailSeams(const MailSeams& seams) { mMailSeams = seams; }

 private:
  // "" when the session (or every session) has what a run needs to start; else why not.
  static std::string StartProblem(const PlistDict& document, std::int64_t sessionIndex);
  void Work(RunRequest request, std::function<void(RunOutcome)> finished);
  RunOutcome Outcome(RunDriver& driver, std::int64_t errorsSeen);
  // Mails the run's log as the preferences say; a failure is only written to the system log.
  void MailLog(RunOutcome& outcome);

  FileSystem& mFs;
  AppkitProxy& mProxy;
  SystemPower& mPower;
  RunSeams mSeams;
  SessionRunServices mServices;
  PlistDict mDocument;     // the run's snapshot
  PlistDict mPreferences;  // the run's snapshot
  std::atomic<RunDriver*> mDriver{nullptr};
  std::atomic<bool> mRunning{false};
  std::atomic<bool> mStopAsked{false};
  MailSeams mMailSeams;
  std::atomic<bool> mMailing{false};
  std::atomic<bool> mMailCancel{false};
  std::thread mWorker;
};

}  // namespace marigold
