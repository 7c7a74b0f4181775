// Fires a document's timers without any window: the 10-second check, the unattended run of a due
// session through the run controller (executed by a timer: nobody is asked anything), completion
// of its entry, and re-planning at the change of day and when the document's file changes on disk.
// `marigold daemon` drives it with its own loop; the desktop program drives it from a 10-second
// timer while its console shows timers, and calls Replan when the user changes the document.
//
// Every call comes from one thread (the driver's). The run's end arrives on the worker thread; it
// is only recorded there, and completion happens at the next Tick, on the driver's thread.
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <functional>
#include <mutex>
#include <optional>
#include <string>

#include "app/document_store.h"
#include "app/run_controller.h"
#include "platform/clock.h"
#include "platform/system_log.h"
#include "scheduling/scheduling_list.h"
#include "scheduling/timer_schedule.h"

namespace marigold {

inline constexpr double kTimerCheckSeconds = 10.0;

class TimerScheduler {
 public:
  // The document is the store's main dictionary, with its selected session (or "All Sessions");
  // runs go through `runs`. Everything given must outlive the scheduler.
  TimerScheduler(RunController& runs, DocumentStore& store, const Clock& clock, SystemLog& log);
  // A timer run still under way is stopped and waited for: its end must not outlive the scheduler.
  ~TimerScheduler();
  TimerScheduler(const TimerScheduler&) = delete;
  TimerScheduler& operator=(const TimerScheduler&) = delete;

  // The preferences the runs read (and prefSyncAndQuit, which keeps every timer off).
  void SetPreferences(const PlistDict& preferences) { mPreferences = preferences; }
  // Re-reads the document from `path` whenever the file there changes (another program saved it).
  void WatchDocumentFile(const std::string& path);
  // Plans again from the document in memory, keeping finished entries.
  void Replan();
  // One check: completes a run that has ended, re-reads a changed document, and starts the run of
  // a due entry. True when it started a run.
  bool Tick();
  // Stops a timer run under way, as Stop does, and waits for its end; its entry is completed.
  void StopAndWait();
  bool IsRunning() const { return mRuns.IsRunning(); }
  // Called on the worker thread with the outcome when a run has ended, so that a driver can show
  // it and Tick at once.
  void SetRunEndedCallback(std::function<void(const RunOutcome&)> callback) { mRunEnded = std::move(callback); }

  const TimerSchedule& schedule() const { return mSchedule; }
  SchedulingList& list() { return mList; }

 private:
  PlanningInput Input() const;
  bool AllSessions() const;
  void CompleteEndedRun();
  void ReloadChangedDocument();
  void Note(int priority, const std::string& line);

  struct FileStamp {
    dev_t device = 0;
    ino_t inode = 0;
    off_t size = 0;
    std::int64_t modifiedNanoseconds = 0;
    bool operator==(const FileStamp&) const = default;
  };
  static std::optional<FileStamp> StampOf(const std::string& path);

  RunController& mRuns;
  DocumentStore& mStore;
  SystemLog& mLog;
  TimerSchedule mSchedule;
  SchedulingList mList;
  PlistDict mPreferences;
  std::string mWatchedPath;
  std::optional<FileStamp> mWatchedStamp;
  std::function<void(const RunOutcome&)> mRunEnded;
  std::string mRunningSessionName;
  bool mTimerRunStarted = false;  // a run this scheduler started has not been completed yet

  std::mutex mEndedMutex;
  std::optional<RunOutcome> mEndedRun;  // set on the worker thread, taken by Tick
};

}  // namespace marigold
