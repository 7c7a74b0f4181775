// The timer panel's rules, without widgets: the texts of its table, the row editor's fields, which
// of them are enabled, the day limit of the steppers, the checks of OK in their order with their
// messages and corrections, and what leaving the panel stores. The desktop panel and `doc set`
// both go through these, so a row is marked valid only when the editor's checks pass.
#pragma once

#include <array>
#include <optional>
#include <string>

#include "scheduling/zoned_calendar.h"
#include "util/plist_value.h"

namespace marigold {

enum class TimerColumn { kOnOff, kStart, kInterval };

// The table's cells. Rows never confirmed in the editor show only their on/off mark.
std::string TimerCellText(const PlistDict& row, TimerColumn column, const ZonedCalendar& calendar);
// Cells are drawn disabled when the master box is off, and all but on/off when the row is off.
bool TimerCellEnabled(const PlistDict& row, TimerColumn column, bool masterOn);
// A click in the on/off column: 1 becomes 0, anything else 1.
void ToggleTimerRow(PlistDict& row);
// The row as the Option-click resets it: on, not confirmed, starting and ending now, no interval,
// every weekday.
PlistDict ResetTimerRow(PlistDate now);

// The editor's fields, as texts where the user types them. Weekdays are indexed from Sunday.
struct TimerEditorFields {
  std::string startMonth, startDay, startYear, startHour, startMinute;
  bool intervalOn = false;
  std::string intervalHours, intervalMinutes, intervalDays, intervalMonths, intervalYears;
  bool endOn = false;
  std::string endHour, endMinute;
  bool endDateOn = false;
  std::string endMonth, endDay, endYear;
  std::array<bool, 7> weekdays{true, true, true, true, true, true, true};
};

enum class TimerField {
  kNone, kStartMonth, kStartDay, kStartYear, kIntervalHours, kEndMonth, kEndDay, kEndYear, kWeekdays
};

// A refused OK: the message of the "Warning:" alert and the field whose text is selected (already
// corrected in the fields when the rule corrects it).
struct TimerEditorRefusal {
  std::string message;
  TimerField field = TimerField::kNone;
};

// Which controls are enabled for these three boxes.
struct TimerEditorEnabling {
  bool intervals = false, endOnBox = false, weekdays = false;  // the interval box is checked
  bool endTime = false, endDateOnBox = false;                  // ... and the end-time box
  bool endDate = false;                                        // ... and the end-date box
};
TimerEditorEnabling ClickCheckBox(bool intervalOn, bool endOn, bool endDateOn);

// The last day the day stepper and the checks allow: 30 for April, June, September, November;
// for February 29 in years divisible by 4 (no century rule, deliberately), else 28; otherwise 31.
int LastDayOfMonth(int month, int year);
// After the start month or year changed: a start day past the limit is lowered to it.
void ApplyStartDayLimit(TimerEditorFields& fields);

// The fields the editor opens with: a confirmed row's own moments; otherwise start now and end a
// week later.
TimerEditorFields FieldsForEditing(const PlistDict& row, PlistDate now, const ZonedCalendar& calendar);
// OK in the editor: the checks in their order. On the first failure the fields get the shown
// correction and nothing is written; otherwise the row is written from the fields and marked valid.
std::optional<TimerEditorRefusal> SetTimerRow(TimerEditorFields& fields, PlistDict& row, const ZonedCalendar& calendar);

// Leaving the panel: the master box is switched off when no row is both on and valid; the box is
// stored in `timerDict`. Returns the stored state.
bool StoreTimerPanel(PlistDict& timerDict, bool masterOn);

// The timer rows of a session edited outside the panel (by `doc set`), checked as the editor
// checks them: every row changed beyond its on/off switch must pass OK's checks and is then
// written back and marked valid; leaving the panel's rule then applies to the master box. Nothing
// when all pass, else the row and the first message.
std::optional<std::string> ConfirmEditedTimerRows(const PlistDict* before, PlistDict& after,
                                                  const ZonedCalendar& calendar);

}  // namespace marigold
