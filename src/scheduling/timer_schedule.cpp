#include "scheduling/timer_schedule.h"

#include <sys/stat.h>

#include "model/document_model.h"
#include "scheduling/timer_planning.h"
#include "util/quillon_additions.h"

namespace marigold {
namespace {

std::int64_t StateOf(const PlistValue& entry) { return entry.AsDict() ? entry.AsDict()->GetInt("state") : 0; }

bool IsRegularFile(const std::string& path) {
  struct stat st {};
  return !path.empty() && ::stat(path.c_str(), &st) == 0 && S_ISREG(st.st_mode);
}

}  // namespace

bool IsTimerOnInSomeSession(const PlistDict& document) {
  const PlistArray* sessions = document.GetArray("sessionsArray");
  if (sessions == nullptr) return false;
  for (const PlistValue& value : *sessions) {
    const PlistDict* session = value.AsDict();
    const PlistDict* timers = session ? session->GetDict("timerDict") : nullptr;
    if (timers == nullptr) return false;
    if (timers->GetInt("timerOn") != 0) return true;
  }
  return false;
}

bool ConsoleRunsCheck(const PlanningInput& input) {
  if (input.document == nullptr || input.syncAndQuit) return false;
  if (IsAllSessions(*input.document, input.sessionIndex)) return IsTimerOnInSomeSession(*input.document);
  const PlistDict* session = GetSessionDict(*input.document, input.sessionIndex);
  const PlistDict* timers = session ? session->GetDict("timerDict") : nullptr;
  return timers != nullptr && timers->GetInt("timerOn") != 0;
}

TimerSchedule::TimerSchedule(const Clock& clock) : mClock(clock), mCalendar(clock.TimeZoneName()) {}

PlistDate TimerSchedule::Now() const { return DateFromUnixSeconds(mClock.Now()); }

std::string TimerSchedule::NextTimerText(const PlistDict& entry, bool allSessions) const {
  // The hour field is the 12-hour one with no marker, as users of earlier versions know it.
  std::string text = "Next Timer: " + mCalendar.Format(entry.GetDate("startDate").value_or(PlistDate{}), "dd MM yyyy - hh:mm");
  if (allSessions) text += " (" + entry.GetString("sessionName") + ")";
  return text;
}

void TimerSchedule::GetExecutiveTimerArray(const PlanningInput& input, bool rebuildAll) {
  mSelectedRow = -1;
  if (input.syncAndQuit) {
    gCurrentExecutiveTimerIndex = -1;
    mEntries.clear();
    return;
  }
  if (rebuildAll) {
    mEntries.clear();
  } else {
    std::erase_if(mEntries, [](const PlistValue& entry) { return StateOf(entry) == kTimerWaiting; });
  }
  gCurrentExecutiveTimerIndex = -1;
  const PlistDate now = Now();
  mLastDayCheckTimer = now;
  std::vector<PlistDict> planned = PlanTimerEntries(input, mCalendar, now);
  const bool allSessions = input.document && IsAllSessions(*input.document, input.sessionIndex);
  for (std::size_t i = 0; i < planned.size(); ++i) {
    if (gCurrentExecutiveTimerIndex < 0 && planned[i].GetInt("state") == kTimerWaiting) {
      planned[i].Set("nextExe", 1);
      // Counted among the new entries only, as the list has always scrolled.
      gCurrentExecutiveTimerIndex = static_cast<std::int64_t>(i);
      mToolTip = NextTimerText(planned[i], allSessions);
    }
    mEntries.push_back(std::move(planned[i]));
  }
  mSelectedRow = gCurrentExecutiveTimerIndex;
}

std::optional<DueTimer> TimerSchedule::CheckIfTimeToSync(const PlanningInput& input, bool isCopying,
                                                         bool consoleShown) {
  if (isCopying) return std::nullopt;
  gCurrentExecutiveTimerIndex = -1;
  const PlistDate now = Now();
  // Yesterday's waiting entries are dropped here and never run; finished ones stay.
  if (!mCalendar.IsSameDay(now, mLastDayCheckTimer)) GetExecutiveTimerArray(input, false);
  mToolTip = "Go to the Timer panel";
  if (mEntries.empty() || !consoleShown) return std::nullopt;

  const int nowMin = mCalendar.MinutesOfDay(now);
  for (std::size_t i = 0; i < mEntries.size(); ++i) {
    PlistDict* entry = mEntries[i].AsDict();
    if (entry == nullptr) continue;
    const std::int64_t state = entry->GetInt("state");
    const PlistDate moment = entry->GetDate("startDate").value_or(PlistDate{});
    if (state == kTimerDone || state == kTimerSkipped || !mCalendar.IsSameDay(moment, now) ||
        mCalendar.MinutesOfDay(moment) > nowMin) {
      continue;
    }
    // A minute that passed during a run, or while the console was hidden, runs late the same day.
    gCurrentExecutiveTimerIndex = static_cast<std::int64_t>(i);
    mSelectedRow = gCurrentExecutiveTimerIndex;
    entry->Set("state", kTimerRunning);
    return DueTimer{i, entry->GetInt("session")};
  }
  return std::nullopt;
}

void TimerSchedule::SchedulingTimerDone(std::int64_t errors, const std::string& logFilePath, bool allSessions) {
  const std::int64_t count = static_cast<std::int64_t>(mEntries.size());
  if (gCurrentExecutiveTimerIndex < 0 || gCurrentExecutiveTimerIndex >= count) return;
  const auto at = static_cast<std::size_t>(gCurrentExecutiveTimerIndex);
  if (PlistDict* entry = mEntries[at].AsDict()) {
    entry->Set("state", kTimerDone);
    entry->Set("errors", errors);
    entry->Set("nextExe", 0);
    if (IsRegularFile(logFilePath)) entry->Set("pathLogFile", logFilePath);
  }
  if (at + 1 == mEntries.size()) {
    mToolTip = "Next Timer: undefined";
  } else if (PlistDict* next = mEntries[at + 1].AsDict()) {
    next->Set("nextExe", 1);
    mToolTip = NextTimerText(*next, allSessions);
    mSelectedRow = static_cast<std::int64_t>(at + 1);
  }
  gCurrentExecutiveTimerIndex = -1;
}

}  // namespace marigold
