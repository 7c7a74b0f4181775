#include <gtest/gtest.h>

#include <functional>

#include "scheduling/timer_editor.h"
#include "scheduling/timer_test_support.h"

namespace marigold {
namespace {

// A repeating row from 10 March 2026, 10:30, every hour until 18:00 on 20 March.
TimerEditorFields GoodFields() {
  TimerEditorFields f;
  f.startMonth = "3", f.startDay = "10", f.startYear = "2026", f.startHour = "10", f.startMinute = "30";
  f.intervalOn = true;
  f.intervalHours = "1", f.intervalMinutes = "0", f.intervalDays = "0", f.intervalMonths = "0", f.intervalYears = "0";
  f.endOn = true, f.endHour = "18", f.endMinute = "0";
  f.endDateOn = true, f.endMonth = "3", f.endDay = "20", f.endYear = "2026";
  return f;
}

struct EditorCase {
  const char* name;
  std::function<void(TimerEditorFields&)> change;
  std::string message;  // "" when OK is accepted
  TimerField field;
  std::string TimerEditorFields::*text = nullptr;  // the selected field, and its text afterwards
  std::string corrected;
};

class EditorOk : public ::testing::TestWithParam<EditorCase> {};
TEST_P(EditorOk, ChecksInOrder) {
  const EditorCase& c = GetParam();
  ZonedCalendar cal("Europe/Rome");
  TimerEditorFields f = GoodFields();
  c.change(f);
  PlistDict row = DefaultTimerRow(PlistDate{});
  const auto refusal = SetTimerRow(f, row, cal);
  EXPECT_EQ(refusal ? refusal->message : "", c.message);
  EXPECT_EQ(row.GetInt("valid"), refusal ? 0 : 1);
  if (refusal) {
    EXPECT_EQ(refusal->field, c.field);
    if (c.text) {
      EXPECT_EQ(f.*c.text, c.corrected);
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Timers, EditorOk, ::testing::Values(
    EditorCase{"Accepted", [](auto&) {}, "", TimerField::kNone},
    EditorCase{"MonthBeforeDayAndYear", [](auto& f) { f.startMonth = "13", f.startDay = "40", f.startYear = "1999"; },
               "The Start Month field must contains values from 1 to 12.", TimerField::kStartMonth, &TimerEditorFields::startMonth, "1"},
    EditorCase{"DayBeforeYear", [](auto& f) { f.startMonth = "2", f.startDay = "30", f.startYear = "1999"; },
               "Start Day not valid.", TimerField::kStartDay, &TimerEditorFields::startDay, "1"},
    EditorCase{"YearFloor", [](auto& f) { f.startYear = "2001"; }, "Can't set a Start Year less than 2002.",
               TimerField::kStartYear, &TimerEditorFields::startYear, "2002"},
    EditorCase{"ZeroInterval", [](auto& f) { f.intervalHours = "0"; }, "Can't set a zero interval.",
               TimerField::kIntervalHours},
    EditorCase{"EqualEndTime", [](auto& f) { f.endHour = "10", f.endMinute = "30"; },
               "The end time cannot be earlier than the start time.", TimerField::kNone},
    EditorCase{"EndMonth", [](auto& f) { f.endMonth = "0"; }, "The End Month field must contains values from 1 to 12.",
               TimerField::kEndMonth, &TimerEditorFields::endMonth, "1"},
    EditorCase{"EndDay", [](auto& f) { f.endDay = "31", f.endMonth = "4"; }, "End Day not valid.", TimerField::kEndDay, &TimerEditorFields::endDay, "1"},
    EditorCase{"EndYear", [](auto& f) { f.endYear = "2001"; }, "Can't set an End Year less than 2002.",
               TimerField::kEndYear, &TimerEditorFields::endYear, "2002"},
    EditorCase{"EndDateBeforeStart", [](auto& f) { f.endDay = "9"; }, "The end date cannot be earlier than the start date.",
               TimerField::kNone},
    EditorCase{"NoWeekday", [](auto& f) { f.weekdays.fill(false); },
               "At least one of the check-boxes \"Execute on\" should be marked.", TimerField::kWeekdays},
    EditorCase{"OneShotSkipsTheRest", [](auto& f) { f.intervalOn = false, f.intervalHours = "0", f.weekdays.fill(false); },
               "", TimerField::kNone},
    EditorCase{"Leap2100WithoutCenturyRule", [](auto& f) { f.startMonth = "2", f.startDay = "29", f.startYear = "2100",
                                                           f.endDateOn = false; }, "", TimerField::kNone}),
    [](const auto& info) { return std::string(info.param.name); });

TEST(TimerEditor, WritesTheRowTheFieldsShowAndTheTableShowsIt) {
  ZonedCalendar cal("Europe/Rome");
  TimerEditorFields f = GoodFields();
  f.intervalDays = "2", f.intervalMonths = "1";
  PlistDict row = DefaultTimerRow(PlistDate{});
  ASSERT_FALSE(SetTimerRow(f, row, cal));
  EXPECT_EQ(row.GetDate("start"), cal.DateFrom(L(2026, 3, 10, 10, 30)));
  EXPECT_EQ(row.GetDate("end"), cal.DateFrom(L(2026, 3, 20, 18, 0)));
  EXPECT_EQ(TimerCellText(row, TimerColumn::kStart, cal), "10 Mar 2026, 10:30");
  EXPECT_EQ(TimerCellText(row, TimerColumn::kInterval, cal), "01:00 1M 2D");
  EXPECT_EQ(TimerCellText(row, TimerColumn::kOnOff, cal), "\u2022");
  ToggleTimerRow(row);
  EXPECT_EQ(TimerCellText(row, TimerColumn::kOnOff, cal), "-");
  EXPECT_FALSE(TimerCellEnabled(row, TimerColumn::kStart, true));
  EXPECT_TRUE(TimerCellEnabled(row, TimerColumn::kOnOff, true));
  EXPECT_EQ(TimerCellText(ResetTimerRow(PlistDate{}), TimerColumn::kStart, cal), "");
}

TEST(TimerEditor, EnablingAndTheDayLimitFollowTheBoxesAndTheMonth) {
  const TimerEditorEnabling cascade = ClickCheckBox(true, false, true);
  EXPECT_TRUE(cascade.intervals && cascade.weekdays && cascade.endOnBox);
  EXPECT_FALSE(cascade.endTime || cascade.endDateOnBox || cascade.endDate);
  EXPECT_FALSE(ClickCheckBox(false, true, true).endDate);
  EXPECT_TRUE(ClickCheckBox(true, true, true).endDate);
  TimerEditorFields f = GoodFields();
  f.startDay = "31", f.startMonth = "2", f.startYear = "2100";
  ApplyStartDayLimit(f);
  EXPECT_EQ(f.startDay, "29");
}

TEST(TimerEditor, LeavingThePanelSwitchesTheMasterBoxOffWithoutAReadyRow) {
  PlistDict timers{{"timerOn", 1}, {"timerArray", PlistArray{DefaultTimerRow(PlistDate{})}}};
  EXPECT_FALSE(StoreTimerPanel(timers, true));
  EXPECT_EQ(timers.GetInt("timerOn"), 0);
  timers.GetArray("timerArray")->front().AsDict()->Set("valid", 1);
  EXPECT_TRUE(StoreTimerPanel(timers, true));
}

}  // namespace
}  // namespace marigold
