#include "scheduling/timer_editor.h"

#include <cctype>
#include <cstdlib>

#include "model/document_model.h"
#include "util/strings_table.h"

namespace marigold {
namespace {

constexpr const char* kWeekdayKeys[7] = {"onlySunday",   "onlyMonday", "onlyTuesday", "onlyWednesday",
                                         "onlyThursday", "onlyFriday", "onlySaturday"};
constexpr int kFirstYear = 2002;

// A field's number as a text field reads it: leading blanks, a sign and digits; anything else is 0.
int NumberOf(const std::string& text) { return static_cast<int>(std::strtol(text.c_str(), nullptr, 10)); }

std::string TwoDigits(std::int64_t value) { return (value < 10 ? "0" : "") + std::to_string(value); }

bool RowIsOn(const PlistDict& row, std::string_view key) { return row.GetInt(key) != 0; }

std::optional<TimerEditorRefusal> Refuse(const char* message, TimerField field, std::string* text = nullptr,
                                         const char* correction = nullptr) {
  if (text != nullptr) *text = correction;
  return TimerEditorRefusal{GLS(message), field};
}

bool DayIsValid(int day, int month, int year) { return day >= 1 && day <= LastDayOfMonth(month, year); }

std::optional<TimerEditorRefusal> CheckFields(TimerEditorFields& f) {
  const int startMonth = NumberOf(f.startMonth), startYear = NumberOf(f.startYear), startDay = NumberOf(f.startDay);
  if (startMonth < 1 || startMonth > 12)
    return Refuse("The Start Month field must contains values from 1 to 12.", TimerField::kStartMonth, &f.startMonth, "1");
  if (!DayIsValid(startDay, startMonth, startYear))
    return Refuse("Start Day not valid.", TimerField::kStartDay, &f.startDay, "1");
  if (startYear < kFirstYear)
    return Refuse("Can't set a Start Year less than 2002.", TimerField::kStartYear, &f.startYear, "2002");
  // A one-shot row has no interval, end or weekdays to check.
  if (!f.intervalOn) return std::nullopt;
  if (NumberOf(f.intervalHours) + NumberOf(f.intervalMinutes) + NumberOf(f.intervalDays) +
          NumberOf(f.intervalMonths) + NumberOf(f.intervalYears) == 0)
    return Refuse("Can't set a zero interval.", TimerField::kIntervalHours);
  if (f.endOn && NumberOf(f.endHour) * 100 + NumberOf(f.endMinute) <=
                     NumberOf(f.startHour) * 100 + NumberOf(f.startMinute))
    return Refuse("The end time cannot be earlier than the start time.", TimerField::kNone);
  if (f.endOn && f.endDateOn) {
    const int endMonth = NumberOf(f.endMonth), endYear = NumberOf(f.endYear), endDay = NumberOf(f.endDay);
    if (endMonth < 1 || endMonth > 12)
      return Refuse("The End Month field must contains values from 1 to 12.", TimerField::kEndMonth, &f.endMonth, "1");
    if (!DayIsValid(endDay, endMonth, endYear)) return Refuse("End Day not valid.", TimerField::kEndDay, &f.endDay, "1");
    if (endYear < kFirstYear)
      return Refuse("Can't set an End Year less than 2002.", TimerField::kEndYear, &f.endYear, "2002");
    if (endDay + endMonth * 100 + endYear * 10000 < startDay + startMonth * 100 + startYear * 10000)
      return Refuse("The end date cannot be earlier than the start date.", TimerField::kNone);
  }
  bool anyDay = false;
  for (bool on : f.weekdays) anyDay = anyDay || on;
  if (!anyDay) return Refuse("At least one of the check-boxes \"Execute on\" should be marked.", TimerField::kWeekdays);
  return std::nullopt;
}

PlistDate MomentOf(const ZonedCalendar& calendar, const std::string& day, const std::string& month,
                   const std::string& year, const std::string& hour, const std::string& minute) {
  return calendar.DateFrom(LocalTime{NumberOf(year), NumberOf(month), NumberOf(day), NumberOf(hour), NumberOf(minute)});
}

}  // namespace

std::string TimerCellText(const PlistDict& row, TimerColumn column, const ZonedCalendar& calendar) {
  if (column == TimerColumn::kOnOff) return row.GetInt("onOff") == 1 ? "\u2022" : "-";
  if (row.GetInt("valid") == 0) return "";
  if (column == TimerColumn::kStart)
    return calendar.Format(row.GetDate("start").value_or(PlistDate{}), "dd MMM yyyy, HH:mm");
  if (!RowIsOn(row, "intervalOn")) return "";
  std::string text = TwoDigits(row.GetInt("intervalHours")) + ":" + TwoDigits(row.GetInt("intervalMinutes")) + " ";
  if (row.GetInt("intervalYears") > 0) text += std::to_string(row.GetInt("intervalYears")) + "Y ";
  if (row.GetInt("intervalMonths") > 0) text += std::to_string(row.GetInt("intervalMonths")) + "M ";
  if (row.GetInt("intervalDays") > 0) text += std::to_string(row.GetInt("intervalDays")) + "D";
  return text;
}

bool TimerCellEnabled(const PlistDict& row, TimerColumn column, bool masterOn) {
  return masterOn && (column == TimerColumn::kOnOff || row.GetInt("onOff") == 1);
}

void ToggleTimerRow(PlistDict& row) { row.Set("onOff", row.GetInt("onOff") == 1 ? 0 : 1); }

PlistDict ResetTimerRow(PlistDate now) { return DefaultTimerRow(now); }

TimerEditorEnabling ClickCheckBox(bool intervalOn, bool endOn, bool endDateOn) {
  TimerEditorEnabling e;
  e.intervals = e.endOnBox = e.weekdays = intervalOn;
  e.endTime = e.endDateOnBox = intervalOn && endOn;
  e.endDate = e.endDateOnBox && endDateOn;
  return e;
}

int LastDayOfMonth(int month, int year) {
  if (month == 4 || month == 6 || month == 9 || month == 11) return 30;
  if (month == 2) return year % 4 == 0 ? 29 : 28;
  return 31;
}

void ApplyStartDayLimit(TimerEditorFields& fields) {
  const int limit = LastDayOfMonth(NumberOf(fields.startMonth), NumberOf(fields.startYear));
  if (NumberOf(fields.startDay) > limit) fields.startDay = std::to_string(limit);
}

TimerEditorFields FieldsForEditing(const PlistDict& row, PlistDate now, const ZonedCalendar& calendar) {
  const bool valid = row.GetInt("valid") != 0;
  const LocalTime start = calendar.Fields(valid ? row.GetDate("start").value_or(now) : now);
  const LocalTime end = calendar.Fields(valid ? row.GetDate("end").value_or(now)
                                              : calendar.DateByAddingYears(now, 0, 0, 7, 0, 0, 0));
  TimerEditorFields f;
  f.startMonth = std::to_string(start.month);
  f.startDay = std::to_string(start.day);
  f.startYear = std::to_string(start.year);
  f.startHour = std::to_string(start.hour);
  f.startMinute = std::to_string(start.minute);
  f.intervalOn = RowIsOn(row, "intervalOn");
  f.intervalHours = std::to_string(row.GetInt("intervalHours"));
  f.intervalMinutes = std::to_string(row.GetInt("intervalMinutes"));
  f.intervalDays = std::to_string(row.GetInt("intervalDays"));
  f.intervalMonths = std::to_string(row.GetInt("intervalMonths"));
  f.intervalYears = std::to_string(row.GetInt("intervalYears"));
  f.endOn = RowIsOn(row, "endOn");
  f.endHour = std::to_string(end.hour);
  f.endMinute = std::to_string(end.minute);
  f.endDateOn = RowIsOn(row, "endDateOn");
  f.endMonth = std::to_string(end.month);
  f.endDay = std::to_string(end.day);
  f.endYear = std::to_string(end.year);
  for (std::size_t i = 0; i < 7; ++i) f.weekdays[i] = RowIsOn(row, kWeekdayKeys[i]);
  return f;
}

std::optional<TimerEditorRefusal> SetTimerRow(TimerEditorFields& f, PlistDict& row, const ZonedCalendar& calendar) {
  if (std::optional<TimerEditorRefusal> refusal = CheckFields(f)) return refusal;
  row.Set("start", MomentOf(calendar, f.startDay, f.startMonth, f.startYear, f.startHour, f.startMinute));
  row.Set("intervalOn", f.intervalOn ? 1 : 0);
  row.Set("intervalHours", NumberOf(f.intervalHours));
  row.Set("intervalMinutes", NumberOf(f.intervalMinutes));
  row.Set("intervalDays", NumberOf(f.intervalDays));
  row.Set("intervalMonths", NumberOf(f.intervalMonths));
  row.Set("intervalYears", NumberOf(f.intervalYears));
  row.Set("endOn", f.endOn ? 1 : 0);
  row.Set("endDateOn", f.endDateOn ? 1 : 0);
  row.Set("end", MomentOf(calendar, f.endDay, f.endMonth, f.endYear, f.endHour, f.endMinute));
  for (std::size_t i = 0; i < 7; ++i) row.Set(kWeekdayKeys[i], f.weekdays[i] ? 1 : 0);
  row.Set("valid", 1);
  return std::nullopt;
}

bool StoreTimerPanel(PlistDict& timerDict, bool masterOn) {
  bool anyReady = false;
  if (const PlistArray* rows = timerDict.GetArray("timerArray")) {
    for (const PlistValue& value : *rows) {
      const PlistDict* row = value.AsDict();
      anyReady = anyReady || (row && RowIsOn(*row, "onOff") && RowIsOn(*row, "valid"));
    }
  }
  const bool stored = masterOn && anyReady;
  timerDict.Set("timerOn", stored ? 1 : 0);
  return stored;
}

std::optional<std::string> ConfirmEditedTimerRows(const PlistDict* before, PlistDict& after,
                                                  const ZonedCalendar& calendar) {
  const PlistArray* oldRows = before ? before->GetArray("timerArray") : nullptr;
  PlistArray* rows = after.GetArray("timerArray");
  if (rows == nullptr) return std::nullopt;
  for (std::size_t i = 0; i < rows->size(); ++i) {
    PlistDict* row = (*rows)[i].AsDict();
    if (row == nullptr) continue;
    const PlistDict* old = oldRows && i < oldRows->size() ? (*oldRows)[i].AsDict() : nullptr;
    if (old != nullptr) {
      // The on/off switch is a click in the table; it needs no editor.
      PlistDict sameSwitch = *row;
      sameSwitch.Set("onOff", old->GetInt("onOff"));
      if (sameSwitch == *old) continue;
    }
    // The editor shows a confirmed row's own moments; here the edit itself is what is confirmed.
    PlistDict shown = *row;
    shown.Set("valid", 1);
    TimerEditorFields fields = FieldsForEditing(shown, PlistDate{}, calendar);
    if (std::optional<TimerEditorRefusal> refusal = SetTimerRow(fields, *row, calendar))
      return "timerDict.timerArray." + std::to_string(i) + ": " + refusal->message;
  }
  if (before == nullptr || *before != after) StoreTimerPanel(after, after.GetInt("timerOn") != 0);
  return std::nullopt;
}

}  // namespace marigold
