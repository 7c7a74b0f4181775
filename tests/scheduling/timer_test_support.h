// Timer rows and documents for the scheduling tests, written in local time of one zone.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "model/document_model.h"
#include "scheduling/zoned_calendar.h"
#include "support/fixed_clock.h"
#include "util/quillon_additions.h"

namespace marigold {

inline LocalTime L(int y, int mo, int d, int h, int mi) { return LocalTime{y, mo, d, h, mi}; }

struct RowSpec {
  LocalTime start;
  int minutes = 0, hours = 0, days = 0, months = 0;  // all 0: a one-shot row
  std::optional<LocalTime> endTime;                  // endOn with this time of day
  std::optional<LocalTime> endDate;                  // endDateOn with this day
  std::string weekdays = "SMTWTFS";                  // a "-" switches that day off, from Sunday
};

inline PlistDict TimerRow(const ZonedCalendar& cal, const RowSpec& shape) {
  PlistDict row = DefaultTimerRow(cal.DateFrom(shape.start));
  row.Set("valid", 1);
  const bool repeats = shape.minutes + shape.hours + shape.days + shape.months != 0;
  row.Set("intervalOn", repeats ? 1 : 0);
  row.Set("intervalMinutes", shape.minutes);
  row.Set("intervalHours", shape.hours);
  row.Set("intervalDays", shape.days);
  row.Set("intervalMonths", shape.months);
  LocalTime end = shape.endDate.value_or(shape.start);
  if (shape.endTime) end.hour = shape.endTime->hour, end.minute = shape.endTime->minute;
  row.Set("end", cal.DateFrom(end));
  row.Set("endOn", shape.endTime ? 1 : 0);
  row.Set("endDateOn", shape.endDate ? 1 : 0);
  const char* keys[7] = {"onlySunday", "onlyMonday", "onlyTuesday", "onlyWednesday", "onlyThursday", "onlyFriday", "onlySaturday"};
  for (int i = 0; i < 7; ++i) row.Set(keys[i], shape.weekdays[static_cast<std::size_t>(i)] == '-' ? 0 : 1);
  return row;
}

// A document whose session i has timers on and the rows of sessions[i].
inline PlistDict TimerDocument(const ZonedCalendar& cal, const std::vector<std::vector<RowSpec>>& sessions) {
  PlistDict model = NewTemplate();
  PlistArray array;
  for (std::size_t i = 0; i < sessions.size(); ++i) {
    PlistDict session = *GetSessionDict(model, 0);
    session.GetDict("consoleDict")->Set("sessionName", "S" + std::to_string(i));
    PlistArray rows;
    for (const RowSpec& shape : sessions[i]) rows.push_back(TimerRow(cal, shape));
    session.Set("timerDict", PlistDict{{"timerOn", 1}, {"timerArray", rows}});
    array.push_back(session);
  }
  model.Set("sessionsArray", array);
  model.Set("sessionIndex", 0);
  return model;
}

inline double UnixAt(const ZonedCalendar& cal, const LocalTime& local) {
  return UnixSecondsFromDate(cal.DateFrom(local));
}

}  // namespace marigold
