#include <gtest/gtest.h>

#include <fstream>

#include "scheduling/scheduling_list.h"
#include "scheduling/timer_planning.h"
#include "scheduling/timer_schedule.h"
#include "scheduling/timer_test_support.h"
#include "support/temp_folder.h"

namespace marigold {
namespace {

// One entry per character: w waiting, r running, d done, s skipped; a capital carries the next mark.
PlistArray Entries(const ZonedCalendar& cal, const std::string& states) {
  PlistArray entries;
  for (std::size_t i = 0; i < states.size(); ++i) {
    const char c = static_cast<char>(std::tolower(states[i]));
    PlistDict e = NewTimerEntry(cal.DateFrom(L(2026, 3, 12, 13, static_cast<int>(i))), 0, "Photos");
    e.Set("state", c == 'w' ? kTimerWaiting : c == 'r' ? kTimerRunning : c == 'd' ? kTimerDone : kTimerSkipped);
    e.Set("errors", 2);
    e.Set("nextExe", std::isupper(states[i]) ? 1 : 0);
    entries.push_back(e);
  }
  return entries;
}

std::string States(const PlistArray& entries) {
  std::string text;
  for (const PlistValue& v : entries) {
    const std::int64_t s = v.AsDict()->GetInt("state");
    const char c = s == kTimerWaiting ? 'w' : s == kTimerRunning ? 'r' : s == kTimerDone ? 'd' : 's';
    text += v.AsDict()->GetInt("nextExe") == 1 ? static_cast<char>(std::toupper(c)) : c;
  }
  return text;
}

struct DeleteCase {
  const char* name;
  std::string before;
  std::vector<std::size_t> selected;
  bool blocked;
  std::string after;
  bool refused;
};

class Deleting : public ::testing::TestWithParam<DeleteCase> {};
TEST_P(Deleting, OnlyFinishedRowsGo) {
  const DeleteCase& c = GetParam();
  ZonedCalendar cal("Europe/Rome");
  PlistArray entries = Entries(cal, c.before);
  SchedulingList list(cal);
  list.SetArray(&entries);
  list.SetBlocked(c.blocked);
  const TimerRowDeletion result = list.DeleteTimerRow(c.selected);
  EXPECT_EQ(States(entries), c.after);
  EXPECT_EQ(result.alert.has_value(), c.refused);
}

INSTANTIATE_TEST_SUITE_P(SchedulingList, Deleting, ::testing::Values(
    DeleteCase{"DoneRowsGoAndTheMarkMovesOn", "dDww", {0, 1}, false, "Ww", false},
    DeleteCase{"DoneAndWaitingRefusesBoth", "dw", {0, 1}, false, "dw", true},
    DeleteCase{"RunningAndSkippedAreRefused", "drs", {1, 2}, false, "drs", true},
    DeleteCase{"BlockedDoesNothing", "dw", {0}, true, "dw", false},
    DeleteCase{"ImpossibleSelectionDoesNothing", "dw", {5}, false, "dw", false}),
    [](const auto& info) { return std::string(info.param.name); });

TEST(SchedulingList, ShowsEachStateAndOpensOnlyExistingLogs) {
  ZonedCalendar cal("Europe/Rome");
  PlistArray entries = Entries(cal, "Wrd");
  TempFolder folder;
  const std::string log = folder.Join("run.rtf");
  std::ofstream(log) << "log";
  entries[2].AsDict()->Set("pathLogFile", log);
  entries[1].AsDict()->Set("pathLogFile", folder.Join("deleted.rtf"));
  SchedulingList list(cal);
  list.SetArray(&entries);
  EXPECT_EQ(list.Text(0, SchedulingColumn::kProgressive), "1");
  EXPECT_EQ(list.Text(0, SchedulingColumn::kStartDate), "2026.03.12, 01:00 - Thursday");
  EXPECT_EQ(list.Text(0, SchedulingColumn::kSessionName), "Photos");
  const std::vector<std::string> states{"Wait", "Run", "Done"}, errors{"", "", "2"};
  const std::vector<TimerTextColour> colours{TimerTextColour::kBlack, TimerTextColour::kRed, TimerTextColour::kGrey};
  for (std::size_t row = 0; row < 3; ++row) {
    EXPECT_EQ(list.Text(row, SchedulingColumn::kState), states[row]);
    EXPECT_EQ(list.Text(row, SchedulingColumn::kErrors), errors[row]);
    EXPECT_EQ(list.Colour(row), colours[row]);
    EXPECT_EQ(list.ShowsNextMark(row), row == 0);
  }
  EXPECT_FALSE(list.LogToOpen(1));
  EXPECT_EQ(list.LogToOpen(2), log);
  list.SetBlocked(true);
  EXPECT_FALSE(list.ChoosePopMenu(2));
  list.SetBlocked(false);
  EXPECT_TRUE(list.ChoosePopMenu(2));
  EXPECT_EQ(list.GetHowManyDays(), 3);
}

}  // namespace
}  // namespace marigold
