#include <gtest/gtest.h>

#include "scheduling/timer_planning.h"
#include "scheduling/timer_schedule.h"
#include "scheduling/timer_test_support.h"

namespace marigold {
namespace {

constexpr int kAll = -1;  // "All Sessions" selected

struct PlanCase {
  const char* name;
  std::vector<std::vector<RowSpec>> sessions;
  LocalTime now;
  int days;
  std::string want;  // "MM-dd HH:mm sN" joined by ", "
  int selected = kAll;
  bool syncAndQuit = false;
  const char* zone = "Europe/Rome";
};

std::string Planned(const PlanCase& c) {
  ZonedCalendar cal(c.zone);
  const PlistDict doc = TimerDocument(cal, c.sessions);
  const std::int64_t index = c.selected == kAll ? SessionCount(doc) + 1 : c.selected;
  PlanningInput input{&doc, index, c.syncAndQuit, c.days};
  std::string text;
  for (const PlistDict& e : PlanTimerEntries(input, cal, cal.DateFrom(c.now))) {
    if (!c.syncAndQuit) {
      if (!text.empty()) text += ", ";
      text += cal.Format(*e.GetDate("startDate"), "MM-dd HH:mm") + " s" + std::to_string(e.GetInt("session"));
    }
  }
  return c.syncAndQuit ? std::string() : text;
}

class Planning : public ::testing::TestWithParam<PlanCase> {};
TEST_P(Planning, ListsTheHorizon) { EXPECT_EQ(Planned(GetParam()), GetParam().want); }

// 2026-03-12 is a Thursday; Rome moves to summer time on 29 March and back on 25 October.
INSTANTIATE_TEST_SUITE_P(Timers, Planning, ::testing::Values(
    PlanCase{"StartTimeOpensTheDailyWindow", {{{L(2026, 3, 10, 10, 30), 0, 5}}}, L(2026, 3, 12, 0, 0), 1,
             "03-12 12:30 s0, 03-12 17:30 s0, 03-12 22:30 s0"},
    PlanCase{"EndTimeIsInclusive", {{{L(2026, 3, 10, 17, 0), 0, 1, 0, 0, L(2026, 3, 10, 18, 0)},
                                     {L(2026, 3, 10, 17, 0), 0, 1, 0, 0, L(2026, 3, 10, 17, 59)}}},
             L(2026, 3, 12, 0, 0), 1, "03-12 17:00 s0, 03-12 17:00 s0, 03-12 18:00 s0"},
    PlanCase{"OneShotOnlyOnItsDayAndNotPast", {{{L(2026, 3, 12, 9, 59)}, {L(2026, 3, 12, 10, 0), 0, 0, 0, 0, {}, {}, "-------"},
                                                {L(2026, 3, 13, 8, 0)}}},
             L(2026, 3, 12, 10, 0), 1, "03-12 10:00 s0"},
    PlanCase{"MonthEndClampsAndCarries", {{{L(2026, 1, 31, 10, 0), 0, 0, 0, 1}}}, L(2026, 2, 28, 0, 0), 30,
             "02-28 10:00 s0, 03-28 10:00 s0"},
    PlanCase{"HorizonSortsAcrossSessions", {{{L(2026, 3, 1, 9, 0), 0, 0, 1}}, {{L(2026, 3, 1, 6, 0), 0, 12}}},
             L(2026, 3, 12, 10, 0), 2, "03-12 18:00 s1, 03-13 06:00 s1, 03-13 09:00 s0, 03-13 18:00 s1"},
    PlanCase{"OneSessionSelectedHidesTheOthers", {{{L(2026, 3, 1, 9, 0), 0, 0, 1}}, {{L(2026, 3, 1, 6, 0), 0, 12}}},
             L(2026, 3, 12, 10, 0), 2, "03-13 09:00 s0", 0},
    PlanCase{"SyncAndQuitPlansNothing", {{{L(2026, 3, 12, 11, 0)}}}, L(2026, 3, 12, 10, 0), 1, "", kAll, true},
    PlanCase{"WeekdayFlagsAndEndDate", {{{L(2026, 3, 1, 9, 0), 0, 0, 1, 0, {}, {}, "-M-----"},
                                         {L(2026, 3, 1, 8, 0), 0, 0, 1, 0, {}, L(2026, 3, 13, 0, 0)}}},
             L(2026, 3, 12, 0, 0), 7, "03-12 08:00 s0, 03-13 08:00 s0, 03-16 09:00 s0"},
    PlanCase{"IgnoredRows", {{{L(2001, 12, 31, 9, 0), 0, 0, 1}, {L(2026, 3, 1, 9, 0), 1, -1}}},
             L(2026, 3, 12, 0, 0), 2, ""},
    PlanCase{"DayOf23Hours", {{{L(2026, 3, 28, 0, 30), 0, 2, 0, 0, L(2026, 3, 28, 7, 0)}}}, L(2026, 3, 29, 0, 0), 2,
             "03-29 00:30 s0, 03-29 03:30 s0, 03-29 05:30 s0, 03-30 01:30 s0, 03-30 03:30 s0, 03-30 05:30 s0"},
    PlanCase{"DayOf25Hours", {{{L(2026, 10, 24, 0, 30), 0, 2, 0, 0, L(2026, 10, 24, 4, 0)}}}, L(2026, 10, 25, 0, 0),
             1, "10-25 00:30 s0, 10-25 02:30 s0, 10-25 03:30 s0"},
    PlanCase{"EveryFewMinutesForYears", {{{L(2004, 1, 1, 0, 7), 7}}}, L(2026, 3, 12, 23, 40), 1,
             "03-12 23:41 s0, 03-12 23:48 s0, 03-12 23:55 s0"},
    PlanCase{"MidnightAfterALongDay", {{{L(2026, 10, 1, 0, 15), 0, 0, 1}}}, L(2026, 10, 24, 12, 0), 3,
             "10-25 00:15 s0, 10-26 00:15 s0"}),
    [](const auto& info) { return std::string(info.param.name); });

}  // namespace
}  // namespace marigold
