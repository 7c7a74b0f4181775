#include "options/filters_days.h"

#include <unicode/gregocal.h>

#include <cmath>
#include <limits>
#include <memory>

#include "util/quillon_additions.h"

namespace marigold {
namespace {

std::int64_t SecondsOf(UDate milliseconds) { return static_cast<std::int64_t>(std::floor(milliseconds / 1000.0)); }

// The calendar's current day, from its midnight to the next midnight.
std::optional<LocalDay> DayAround(icu::Calendar& calendar) {
  UErrorCode status = U_ZERO_ERROR;
  calendar.set(UCAL_HOUR_OF_DAY, 0);
  calendar.set(UCAL_MINUTE, 0);
  calendar.set(UCAL_SECOND, 0);
  calendar.set(UCAL_MILLISECOND, 0);
  const UDate start = calendar.getTime(status);
  calendar.add(UCAL_DATE, 1, status);
  const UDate end = calendar.getTime(status);
  if (U_FAILURE(status)) return std::nullopt;
  return LocalDay{SecondsOf(start), SecondsOf(end)};
}

std::unique_ptr<icu::Calendar> LocalCalendar() {
  UErrorCode status = U_ZERO_ERROR;
  auto calendar = std::make_unique<icu::GregorianCalendar>(status);
  return U_FAILURE(status) ? nullptr : std::move(calendar);
}

std::optional<LocalDay> DayHolding(PlistDate date, int daysBack) {
  auto calendar = LocalCalendar();
  if (!calendar) return std::nullopt;
  UErrorCode status = U_ZERO_ERROR;
  calendar->setTime((UnixSecondsFromDate(date)) * 1000.0, status);
  if (daysBack != 0) calendar->add(UCAL_DATE, -daysBack, status);
  if (U_FAILURE(status)) return std::nullopt;
  return DayAround(*calendar);
}

}  // namespace

std::optional<LocalDay> LocalDayOf(std::int64_t year, std::int64_t month, std::int64_t day) {
  constexpr std::int64_t kLimit = 1'000'000;  // far beyond any file's date, well inside ICU's range
  if (std::abs(year) > kLimit || std::abs(month) > kLimit || std::abs(day) > kLimit) return std::nullopt;
  auto calendar = LocalCalendar();
  if (!calendar) return std::nullopt;
  calendar->clear();
  calendar->set(static_cast<int32_t>(year), static_cast<int32_t>(month - 1), static_cast<int32_t>(day));
  return DayAround(*calendar);
}

std::optional<LocalDay> LocalDayHolding(PlistDate date) { return DayHolding(date, 0); }
std::optional<LocalDay> LocalDayBefore(PlistDate date) { return DayHolding(date, 1); }

}  // namespace marigold
