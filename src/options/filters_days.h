// Calendar days in the user's time zone as ranges of Unix seconds, so that "the item's day is
// the row's day" becomes two comparisons of the item's time with the day's bounds.
#pragma once

#include <cstdint>
#include <optional>

#include "util/plist_value.h"

namespace marigold {

// [start, end) of one local calendar day, in Unix seconds. Days where the clocks change are
// 23 or 25 hours long.
struct LocalDay {
  std::int64_t start = 0;
  std::int64_t end = 0;
};

// The local day of `year`-`month`-`day`; values past the month's end roll over into the next
// month, as the calendar does. Nothing when the calendar cannot represent the date.
std::optional<LocalDay> LocalDayOf(std::int64_t year, std::int64_t month, std::int64_t day);
// The local day that holds `date`, and the day before it.
std::optional<LocalDay> LocalDayHolding(PlistDate date);
std::optional<LocalDay> LocalDayBefore(PlistDate date);

}  // namespace marigold
