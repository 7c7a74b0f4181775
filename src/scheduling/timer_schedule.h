// The executive timer list: planning the executions of the sessions' timer rows over the horizon,
// the 10-second check that finds the entry due now, and completion when its run has ended. Pure
// logic over an injected clock and zone; whoever fires timers calls it from one thread.
//
// Entries move from waiting (0) to running (-1) when the check hands one out, and to done (1) at
// completion. Re-planning drops every waiting entry and keeps running, done and skipped ones at the
// front, so a finished run's row stays visible until the whole list is rebuilt.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "platform/clock.h"
#include "scheduling/zoned_calendar.h"
#include "util/plist_value.h"

namespace marigold {

enum TimerEntryState : int { kTimerWaiting = 0, kTimerRunning = -1, kTimerDone = 1, kTimerSkipped = -2 };

// What planning reads: the document, the console's current session and the sync-and-quit preference.
struct PlanningInput {
  const PlistDict* document = nullptr;
  std::int64_t sessionIndex = 0;  // a session, or the "All Sessions" entry (count + 1)
  bool syncAndQuit = false;       // prefSyncAndQuit: no timer is planned or fired
  int howManyDays = 1;            // the scheduling list's horizon, at least 1
};

// The entry the check found due, and the session its run must perform.
struct DueTimer {
  std::size_t entry = 0;
  std::int64_t session = 0;
};

// Whether a session has its master timer box on. Walks from the first session and stops, saying
// no, at the first session without a timer block: later sessions are not looked at.
bool IsTimerOnInSomeSession(const PlistDict& document);
// Whether the console runs the check for this selection: a selected session with its timers on,
// or "All Sessions" with some session's timers on; never while sync-and-quit is set.
bool ConsoleRunsCheck(const PlanningInput& input);

class TimerSchedule {
 public:
  // `clock` gives the time and the zone days are counted in; it must outlive the schedule.
  explicit TimerSchedule(const Clock& clock);

  // Plans the list (dropping the waiting entries, or every entry when `rebuildAll`), as of now.
  void GetExecutiveTimerArray(const PlanningInput& input, bool rebuildAll);
  // The periodic check. Nothing while a run is going on or the console is not shown. At a change
  // of day it re-plans first. Hands out at most one due entry, marked running.
  std::optional<DueTimer> CheckIfTimeToSync(const PlanningInput& input, bool isCopying, bool consoleShown = true);
  // The run of the running entry has ended: the entry is done with the run's error count and the
  // log file when it exists; the next entry is marked next. Nothing when no entry is running.
  void SchedulingTimerDone(std::int64_t errors, const std::string& logFilePath, bool allSessions);

  const PlistArray& executiveTimerArray() const { return mEntries; }
  PlistArray& executiveTimerArray() { return mEntries; }
  std::int64_t currentIndex() const { return gCurrentExecutiveTimerIndex; }
  // The row the scheduling list scrolls to after the last change; -1 for none.
  std::int64_t selectedRow() const { return mSelectedRow; }
  // The console timer button's tool tip.
  const std::string& toolTip() const { return mToolTip; }
  PlistDate lastDayCheckTimer() const { return mLastDayCheckTimer; }
  const ZonedCalendar& calendar() const { return mCalendar; }

 private:
  PlistDate Now() const;
  std::string NextTimerText(const PlistDict& entry, bool allSessions) const;

  const Clock& mClock;
  ZonedCalendar mCalendar;
  PlistArray mEntries;  // executiveTimerArray
  std::int64_t gCurrentExecutiveTimerIndex = -1;
  std::int64_t mSelectedRow = -1;
  PlistDate mLastDayCheckTimer{};
  std::string mToolTip;
};

}  // namespace marigold
