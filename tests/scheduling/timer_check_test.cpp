#include <gtest/gtest.h>

#include <fstream>

#include "scheduling/timer_schedule.h"
#include "scheduling/timer_test_support.h"
#include "support/temp_folder.h"

namespace marigold {
namespace {

class TimerCheck : public ::testing::Test {
 protected:
  ZonedCalendar cal{"Europe/Rome"};
  FixedClock clock{0, "Europe/Rome"};
  TimerSchedule schedule{clock};
  PlistDict doc;
  PlanningInput input;

  void Plan(const std::vector<RowSpec>& rows, LocalTime now) {
    doc = TimerDocument(cal, {rows});
    input = PlanningInput{&doc, 0, false, 1};
    clock.Set(UnixAt(cal, now));
    schedule.GetExecutiveTimerArray(input, false);
  }
  std::optional<DueTimer> CheckAt(LocalTime now, bool copying = false) {
    clock.Set(UnixAt(cal, now));
    return schedule.CheckIfTimeToSync(input, copying);
  }
  const PlistDict& Entry(std::size_t i) { return *schedule.executiveTimerArray()[i].AsDict(); }
};

TEST_F(TimerCheck, LateEntriesRunOnePerCheckAndCompletionMovesTheNextMark) {
  Plan({{L(2026, 3, 12, 10, 1)}, {L(2026, 3, 12, 10, 2)}}, L(2026, 3, 12, 10, 0));
  EXPECT_EQ(schedule.toolTip(), "Next Timer: 12 03 2026 - 10:01");
  EXPECT_FALSE(CheckAt(L(2026, 3, 12, 10, 0)));
  EXPECT_FALSE(CheckAt(L(2026, 3, 12, 10, 5), /*copying=*/true));

  const auto first = CheckAt(L(2026, 3, 12, 10, 5));
  ASSERT_TRUE(first);
  EXPECT_EQ(first->entry, 0u);
  EXPECT_EQ(Entry(0).GetInt("state"), kTimerRunning);
  schedule.SchedulingTimerDone(3, "/nonexistent/log.rtf", false);
  EXPECT_EQ(Entry(0).GetInt("state"), kTimerDone);
  EXPECT_EQ(Entry(0).GetInt("errors"), 3);
  EXPECT_EQ(Entry(0).Find("pathLogFile"), nullptr);
  EXPECT_EQ(Entry(1).GetInt("nextExe"), 1);

  const auto second = CheckAt(L(2026, 3, 12, 10, 5));
  ASSERT_TRUE(second);
  EXPECT_EQ(second->entry, 1u);
  TempFolder folder;
  const std::string log = folder.Path() + "/run.rtf";
  std::ofstream(log) << "log";
  schedule.SchedulingTimerDone(0, log, false);
  EXPECT_EQ(Entry(1).GetString("pathLogFile"), log);
  EXPECT_EQ(schedule.toolTip(), "Next Timer: undefined");
  EXPECT_FALSE(CheckAt(L(2026, 3, 12, 10, 6)));
  // Completion with nothing running changes nothing.
  schedule.SchedulingTimerDone(9, "", false);
  EXPECT_EQ(Entry(1).GetInt("errors"), 0);
}

TEST_F(TimerCheck, TheDayChangeDropsYesterdaysWaitingEntriesAndKeepsFinishedOnes) {
  Plan({{L(2026, 3, 12, 23, 51)}, {L(2026, 3, 12, 23, 55)}}, L(2026, 3, 12, 23, 50));
  ASSERT_TRUE(CheckAt(L(2026, 3, 12, 23, 52)));
  schedule.SchedulingTimerDone(0, "", false);
  EXPECT_FALSE(CheckAt(L(2026, 3, 13, 0, 1)));
  ASSERT_EQ(schedule.executiveTimerArray().size(), 1u);
  EXPECT_EQ(Entry(0).GetInt("state"), kTimerDone);
}

TEST(TimerSwitches, TheFirstSessionWithoutTimersEndsTheSearch) {
  auto document = [](std::vector<std::optional<int>> timerOn) {
    PlistArray sessions;
    for (const auto& on : timerOn) {
      PlistDict session;
      if (on) session.Set("timerDict", PlistDict{{"timerOn", *on}});
      sessions.push_back(session);
    }
    return PlistDict{{"sessionsArray", sessions}};
  };
  EXPECT_TRUE(IsTimerOnInSomeSession(document({0, 1})));
  EXPECT_FALSE(IsTimerOnInSomeSession(document({0, std::nullopt, 1})));
  EXPECT_FALSE(IsTimerOnInSomeSession(document({})));
  EXPECT_FALSE(IsTimerOnInSomeSession(PlistDict{}));
}

}  // namespace
}  // namespace marigold
