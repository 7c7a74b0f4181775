#include "app/timer_scheduler.h"

#include <sys/stat.h>
#include <syslog.h>

#include "model/document_model.h"

namespace marigold {

TimerScheduler::TimerScheduler(RunController& runs, DocumentStore& store, const Clock& clock, SystemLog& log)
    : mRuns(runs), mStore(store), mLog(log), mSchedule(clock), mList(mSchedule.calendar()) {}

TimerScheduler::~TimerScheduler() {
  if (mTimerRunStarted) StopAndWait();
}

std::optional<TimerScheduler::FileStamp> TimerScheduler::StampOf(const std::string& path) {
  struct stat st {};
  if (::stat(path.c_str(), &st) != 0) return std::nullopt;
  return FileStamp{st.st_dev, st.st_ino, st.st_size,
                   static_cast<std::int64_t>(st.st_mtim.tv_sec) * 1000000000 + st.st_mtim.tv_nsec};
}

void TimerScheduler::Note(int priority, const std::string& line) { mLog.Write(priority, line); }

PlanningInput TimerScheduler::Input() const {
  const PlistDict& document = mStore.mainDict();
  return PlanningInput{&document, document.GetInt("sessionIndex"), mPreferences.GetInt("prefSyncAndQuit") != 0,
                       mList.GetHowManyDays()};
}

bool TimerScheduler::AllSessions() const {
  const PlistDict& document = mStore.mainDict();
  return IsAllSessions(document, document.GetInt("sessionIndex"));
}

void TimerScheduler::WatchDocumentFile(const std::string& path) {
  mWatchedPath = path;
  mWatchedStamp = StampOf(path);
}

void TimerScheduler::Replan() {
  mSchedule.GetExecutiveTimerArray(Input(), false);
  mList.SetArray(&mSchedule.executiveTimerArray());
  std::size_t waiting = 0;
  for (const PlistValue& entry : mSchedule.executiveTimerArray())
    if (entry.AsDict() && entry.AsDict()->GetInt("state") == kTimerWaiting) ++waiting;
  Note(LOG_INFO, "Timers planned: " + std::to_string(waiting) + " to run. " +
                     (waiting > 0 ? mSchedule.toolTip() : std::string("Next Timer: undefined")));
}

void TimerScheduler::ReloadChangedDocument() {
  if (mWatchedPath.empty()) return;
  const std::optional<FileStamp> stamp = StampOf(mWatchedPath);
  if (!stamp || stamp == mWatchedStamp) return;
  // A half-written file fails to read; the next check tries again.
  if (!mStore.ReadDocumentFile(mWatchedPath)) return;
  mWatchedStamp = stamp;
  Note(LOG_INFO, "The document \"" + mWatchedPath + "\" changed on disk: timers are planned again.");
  Replan();
}

void TimerScheduler::CompleteEndedRun() {
  std::optional<RunOutcome> outcome;
  {
    std::lock_guard<std::mutex> lock(mEndedMutex);
    outcome.swap(mEndedRun);
  }
  if (!outcome) return;
  mRuns.Wait();
  mTimerRunStarted = false;
  mSchedule.SchedulingTimerDone(outcome->errors, outcome->logFilePath, AllSessions());
  mList.SetBlocked(false);
  std::string line = "Timer run of \"" + mRunningSessionName + "\" ";
  switch (outcome->ending) {
    case RunEnding::kStopped: line += "stopped"; break;
    case RunEnding::kCouldNotStart: line += "could not start: " + outcome->couldNotStartReason; break;
    case RunEnding::kScanFailed: line += "could not scan its folders"; break;
    case RunEnding::kCompleted:
    case RunEnding::kPreviewCancelled:
    case RunEnding::kNotConfirmed: line += "ended"; break;
  }
  line += ", errors: " + std::to_string(outcome->errors);
  if (!outcome->logFilePath.empty()) line += ", log: " + outcome->logFilePath;
  Note(outcome->errors > 0 || outcome->ending != RunEnding::kCompleted ? LOG_WARNING : LOG_NOTICE, line);
}

bool TimerScheduler::Tick() {
  CompleteEndedRun();
  if (mRuns.IsRunning()) return false;
  ReloadChangedDocument();
  const PlanningInput input = Input();
  if (!ConsoleRunsCheck(input)) return false;
  const std::optional<DueTimer> due = mSchedule.CheckIfTimeToSync(input, mRuns.IsRunning());
  if (!due) return false;

  const PlistDict* entry = mSchedule.executiveTimerArray()[due->entry].AsDict();
  mRunningSessionName = entry ? entry->GetString("sessionName") : "";
  mList.SetBlocked(true);
  Note(LOG_NOTICE, "Timer run of \"" + mRunningSessionName + "\" starts.");
  const RunRequest request{due->session, kExecutedByTimer, false};
  mTimerRunStarted = true;
  const bool started = mRuns.TaskExecuteSyncOrBackup(mStore.mainDict(), mPreferences, request, [this](const RunOutcome& outcome) {
    {
      std::lock_guard<std::mutex> lock(mEndedMutex);
      mEndedRun = outcome;
    }
    if (mRunEnded) mRunEnded(outcome);
  });
  // A run that could not start has already handed its outcome over: its entry is finished now.
  if (!started) CompleteEndedRun();
  return started;
}

void TimerScheduler::StopAndWait() {
  mRuns.Stop();
  mRuns.Wait();
  CompleteEndedRun();
}

}  // namespace marigold
