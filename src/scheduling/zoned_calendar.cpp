#include "scheduling/zoned_calendar.h"

#include <unicode/gregocal.h>
#include <unicode/timezone.h>

#include <utility>

#include "util/quillon_additions.h"

namespace marigold {
namespace {

double UDateOf(PlistDate date) { return UnixSecondsFromDate(date) * 1000.0; }
PlistDate DateOfUDate(UDate udate) { return DateFromUnixSeconds(udate / 1000.0); }

icu::TimeZone* ZoneNamed(const std::string& name) {
  if (name.empty()) return icu::TimeZone::createDefault();
  return icu::TimeZone::createTimeZone(icu::UnicodeString::fromUTF8(name));
}

}  // namespace

ZonedCalendar::ZonedCalendar(const std::string& zoneName) : mZoneName(zoneName) {
  UErrorCode status = U_ZERO_ERROR;
  mCalendar = std::make_unique<icu::GregorianCalendar>(ZoneNamed(zoneName), status);
}

ZonedCalendar::~ZonedCalendar() = default;

icu::Calendar& ZonedCalendar::At(PlistDate date) const {
  UErrorCode status = U_ZERO_ERROR;
  mCalendar->setTime(UDateOf(date), status);
  return *mCalendar;
}

PlistDate ZonedCalendar::TruncateSeconds(PlistDate date) const {
  icu::Calendar& calendar = At(date);
  calendar.set(UCAL_SECOND, 0);
  calendar.set(UCAL_MILLISECOND, 0);
  UErrorCode status = U_ZERO_ERROR;
  const UDate result = calendar.getTime(status);
  return U_FAILURE(status) ? date : DateOfUDate(result);
}

PlistDate ZonedCalendar::TruncateHours(PlistDate date) const {
  icu::Calendar& calendar = At(date);
  for (UCalendarDateFields field : {UCAL_HOUR_OF_DAY, UCAL_MINUTE, UCAL_SECOND, UCAL_MILLISECOND}) calendar.set(field, 0);
  UErrorCode status = U_ZERO_ERROR;
  const UDate result = calendar.getTime(status);
  return U_FAILURE(status) ? date : DateOfUDate(result);
}

int ZonedCalendar::CompareDay(PlistDate date, PlistDate other) const {
  const double a = TruncateHours(date).seconds, b = TruncateHours(other).seconds;
  return a < b ? -1 : (a > b ? 1 : 0);
}

int ZonedCalendar::MinutesOfDay(PlistDate date) const {
  icu::Calendar& calendar = At(date);
  UErrorCode status = U_ZERO_ERROR;
  const int hour = calendar.get(UCAL_HOUR_OF_DAY, status);
  const int minute = calendar.get(UCAL_MINUTE, status);
  return U_FAILURE(status) ? 0 : hour * 60 + minute;
}

int ZonedCalendar::DayOfWeek(PlistDate date) const {
  UErrorCode status = U_ZERO_ERROR;
  const int weekday = At(date).get(UCAL_DAY_OF_WEEK, status);
  return U_FAILURE(status) ? 0 : weekday - UCAL_SUNDAY;
}

int ZonedCalendar::Year(PlistDate date) const {
  UErrorCode status = U_ZERO_ERROR;
  const int year = At(date).get(UCAL_YEAR, status);
  return U_FAILURE(status) ? 0 : year;
}

PlistDate ZonedCalendar::DateByAddingYears(PlistDate date, int years, int months, int days, int hours, int minutes,
                                           int seconds) const {
  icu::Calendar& calendar = At(date);
  UErrorCode status = U_ZERO_ERROR;
  const std::pair<UCalendarDateFields, int> steps[] = {{UCAL_YEAR, years},     {UCAL_MONTH, months},
                                                       {UCAL_DATE, days},      {UCAL_HOUR, hours},
                                                       {UCAL_MINUTE, minutes}, {UCAL_SECOND, seconds}};
  for (const auto& [field, amount] : steps)
    if (amount != 0) calendar.add(field, amount, status);
  const UDate result = calendar.getTime(status);
  return U_FAILURE(status) ? date : DateOfUDate(result);
}

PlistDate ZonedCalendar::NextMidnight(PlistDate date) const {
  // Noon is never skipped by a clock change, so the next day is found from there.
  icu::Calendar& calendar = At(TruncateHours(date));
  UErrorCode status = U_ZERO_ERROR;
  calendar.set(UCAL_HOUR_OF_DAY, 12);
  calendar.add(UCAL_DATE, 1, status);
  const UDate result = calendar.getTime(status);
  return U_FAILURE(status) ? date : TruncateHours(DateOfUDate(result));
}

LocalTime ZonedCalendar::Fields(PlistDate date) const {
  icu::Calendar& calendar = At(date);
  UErrorCode status = U_ZERO_ERROR;
  LocalTime local;
  local.year = calendar.get(UCAL_YEAR, status);
  local.month = calendar.get(UCAL_MONTH, status) + 1;
  local.day = calendar.get(UCAL_DATE, status);
  local.hour = calendar.get(UCAL_HOUR_OF_DAY, status);
  local.minute = calendar.get(UCAL_MINUTE, status);
  return local;
}

PlistDate ZonedCalendar::DateFrom(const LocalTime& local) const {
  mCalendar->clear();
  mCalendar->set(local.year, local.month - 1, local.day, local.hour, local.minute, 0);
  UErrorCode status = U_ZERO_ERROR;
  const UDate result = mCalendar->getTime(status);
  return U_FAILURE(status) ? PlistDate{} : DateOfUDate(result);
}

std::string ZonedCalendar::Format(PlistDate date, std::string_view pattern) const {
  return StringWithFormat(date, pattern, "", mZoneName);
}

}  // namespace marigold
