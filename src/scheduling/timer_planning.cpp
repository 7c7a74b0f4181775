#include "scheduling/timer_planning.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <utility>

#include "model/document_model.h"
#include "scheduling/timer_schedule.h"

namespace marigold {
namespace {

constexpr int kFirstPlannedYear = 2002;
constexpr const char* kWeekdayKeys[7] = {"onlySunday",   "onlyMonday", "onlyTuesday", "onlyWednesday",
                                         "onlyThursday", "onlyFriday", "onlySaturday"};

bool IsOn(const PlistDict& row, std::string_view key) { return row.GetInt(key) != 0; }
int IntOf(const PlistDict& row, std::string_view key) { return static_cast<int>(row.GetInt(key)); }

struct SessionRef {
  std::int64_t index;
  const PlistDict* session;
};

std::vector<SessionRef> ConsideredSessions(const PlanningInput& input) {
  std::vector<SessionRef> sessions;
  const std::int64_t count = SessionCount(*input.document);
  const bool all = IsAllSessions(*input.document, input.sessionIndex);
  for (std::int64_t i = 0; i < count; ++i) {
    if (!all && i != input.sessionIndex) continue;
    if (const PlistDict* session = GetSessionDict(*input.document, i)) sessions.push_back({i, session});
  }
  return sessions;
}

std::string SessionNameOf(const PlistDict& session) {
  const PlistDict* console = session.GetDict("consoleDict");
  return console ? console->GetString("sessionName") : std::string();
}

// Where a series' walk may start again on a later day: every occurrence before it lies on an
// earlier day, so long series are not stepped from their start once per day of the horizon.
using ResumePoints = std::map<std::pair<std::int64_t, std::size_t>, PlistDate>;

class DayPlanner {
 public:
  DayPlanner(const ZonedCalendar& calendar, std::vector<PlistDict>& out, ResumePoints& resume)
      : mCal(calendar), mOut(out), mResume(resume) {}

  void PlanRow(const SessionRef& ref, const std::string& name, std::size_t rowIndex, const PlistDict& row,
               PlistDate day, int nowMin) {
    const std::optional<PlistDate> rowStart = row.GetDate("start");
    if (!IsOn(row, "onOff") || !IsOn(row, "valid") || !rowStart) return;
    const PlistDate start = mCal.TruncateSeconds(*rowStart);
    if (mCal.CompareDay(start, day) == 1 || mCal.Year(start) < kFirstPlannedYear) return;
    const int startMin = mCal.MinutesOfDay(start);
    const PlistDate end = mCal.TruncateSeconds(row.GetDate("end").value_or(start));
    const int endMin = mCal.MinutesOfDay(end);

    if (!IsOn(row, "intervalOn")) {
      if (mCal.IsSameDay(start, day) && startMin >= nowMin) mOut.push_back(NewTimerEntry(start, ref.index, name));
      return;
    }
    const bool endDateOn = IsOn(row, "endDateOn"), endOn = IsOn(row, "endOn");
    if (endDateOn && (mCal.CompareDay(end, day) == -1 || mCal.Year(end) < kFirstPlannedYear)) return;
    if (endOn && endMin < nowMin) return;
    if (!IsOn(row, kWeekdayKeys[mCal.DayOfWeek(day)])) return;
    const int years = IntOf(row, "intervalYears"), months = IntOf(row, "intervalMonths"),
              days = IntOf(row, "intervalDays"), hours = IntOf(row, "intervalHours"),
              minutes = IntOf(row, "intervalMinutes");
    if (years + months + days + hours + minutes <= 0) return;

    const auto key = std::make_pair(ref.index, rowIndex);
    const auto found = mResume.find(key);
    PlistDate t = found != mResume.end() ? found->second : start;
    // Hours and minutes are elapsed time, so a series of them alone is start + k x step: a long
    // one (every minute for years) jumps to just before the day instead of walking there.
    const double step = (hours * 60.0 + minutes) * 60.0;
    if (years == 0 && months == 0 && days == 0 && step > 0) {
      const double skipped = std::floor((mCal.TruncateHours(day).seconds - t.seconds) / step) - 1;
      if (skipped > 0) t.seconds += skipped * step;
    }
    bool resumeSet = false;
    while (true) {
      const int dayOrder = mCal.CompareDay(t, day);
      if (dayOrder >= 0 && !resumeSet) {
        mResume[key] = t;
        resumeSet = true;
      }
      const int tMin = mCal.MinutesOfDay(t);
      if (dayOrder < 0 || tMin < startMin) {
        // The start's time of day opens a daily window: earlier occurrences never run.
      } else if (dayOrder > 0) {
        break;
      } else if (endDateOn && mCal.CompareDay(t, end) > 0) {
        break;
      } else if (endOn && tMin > endMin) {
        break;
      } else if (tMin >= nowMin) {
        mOut.push_back(NewTimerEntry(t, ref.index, name));
      }
      const PlistDate next = mCal.DateByAddingYears(t, years, months, days, hours, minutes, 0);
      // Components that cancel out (2 years and -24 months) would never leave the day.
      if (next.seconds <= t.seconds) break;
      t = next;
    }
  }

 private:
  const ZonedCalendar& mCal;
  std::vector<PlistDict>& mOut;
  ResumePoints& mResume;
};

}  // namespace

PlistDict NewTimerEntry(PlistDate moment, std::int64_t session, const std::string& sessionName) {
  return PlistDict{{"nextExe", 0},       {"startDate", moment}, {"session", session},
                   {"sessionName", sessionName}, {"state", kTimerWaiting}, {"errors", 0}};
}

std::vector<PlistDict> PlanTimerEntries(const PlanningInput& input, const ZonedCalendar& calendar, PlistDate now) {
  std::vector<PlistDict> entries;
  if (input.document == nullptr) return entries;
  const std::vector<SessionRef> sessions = ConsideredSessions(input);
  ResumePoints resume;
  DayPlanner planner(calendar, entries, resume);
  PlistDate day = calendar.TruncateSeconds(now);
  for (int d = 0; d < std::max(1, input.howManyDays); ++d) {
    // The first day plans from the current minute; later days start at their midnight.
    const int nowMin = calendar.MinutesOfDay(day);
    for (const SessionRef& ref : sessions) {
      const PlistDict* timers = ref.session->GetDict("timerDict");
      const PlistArray* rows = timers ? timers->GetArray("timerArray") : nullptr;
      if (timers == nullptr || timers->GetInt("timerOn") == 0 || rows == nullptr || rows->empty()) continue;
      const std::string name = SessionNameOf(*ref.session);
      for (std::size_t r = 0; r < rows->size(); ++r) {
        if (const PlistDict* row = (*rows)[r].AsDict()) planner.PlanRow(ref, name, r, *row, day, nowMin);
      }
    }
    day = calendar.NextMidnight(day);
  }
  std::stable_sort(entries.begin(), entries.end(), [](const PlistDict& a, const PlistDict& b) {
    return a.GetDate("startDate")->seconds < b.GetDate("startDate")->seconds;
  });
  return entries;
}

}  // namespace marigold
