// The calendar that timers are planned in: the user's Gregorian calendar in one time zone, given
// by name so that planning follows the clock it is handed rather than the process's zone. The same
// helpers as the date utilities (days are local days, minutes of the day are local wall time).
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include <unicode/uversion.h>

#include "util/plist_value.h"

U_NAMESPACE_BEGIN
class Calendar;
U_NAMESPACE_END

namespace marigold {

// A local wall-clock moment, months from 1.
struct LocalTime {
  int year = 2002, month = 1, day = 1, hour = 0, minute = 0;
};

class ZonedCalendar {
 public:
  // `zoneName` is an IANA name ("Europe/Rome"); "" is the process's own zone.
  explicit ZonedCalendar(const std::string& zoneName = "");
  ~ZonedCalendar();
  ZonedCalendar(const ZonedCalendar&) = delete;
  ZonedCalendar& operator=(const ZonedCalendar&) = delete;

  PlistDate TruncateSeconds(PlistDate date) const;  // seconds and below set to zero
  PlistDate TruncateHours(PlistDate date) const;    // local midnight of the date's day
  int CompareDay(PlistDate date, PlistDate other) const;  // -1 earlier day, 0 same, 1 later
  bool IsSameDay(PlistDate date, PlistDate other) const { return CompareDay(date, other) == 0; }
  int MinutesOfDay(PlistDate date) const;  // hour * 60 + minute
  int DayOfWeek(PlistDate date) const;     // 0 = Sunday ... 6 = Saturday
  int Year(PlistDate date) const;
  // Calendar addition, largest component first; month ends clamp (31 January + 1 month is the
  // last day of February); hours and minutes are elapsed time.
  PlistDate DateByAddingYears(PlistDate date, int years, int months, int days, int hours, int minutes,
                              int seconds) const;
  // Midnight of the day after the date's day (23 or 25 hours later on a day the clocks change).
  PlistDate NextMidnight(PlistDate date) const;
  LocalTime Fields(PlistDate date) const;
  // The moment of a local time; a time the clocks skip reads as the moment after the change.
  PlistDate DateFrom(const LocalTime& local) const;
  // The date formatted with a Unicode pattern in the user's locale and this zone.
  std::string Format(PlistDate date, std::string_view pattern) const;
  const std::string& zoneName() const { return mZoneName; }

 private:
  icu::Calendar& At(PlistDate date) const;

  std::string mZoneName;
  std::unique_ptr<icu::Calendar> mCalendar;  // reused: planning steps through long series
};

}  // namespace marigold
