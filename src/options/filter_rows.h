// The checks a filter row passes before the Filters panel (or `doc set` on the command line)
// stores it, and the readings of a row's numeric fields that the checks and the filter share.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "util/plist_value.h"

namespace marigold {

// Days of `month` (1-12) in `year`: February has 29 in every year divisible by 4 (the panel
// has always counted this way, centuries included). 0 for a month outside 1-12.
int FilterDaysInMonth(std::int64_t month, std::int64_t year);

// A whole number held by `key`: an integer, a real (truncated), or a string holding only an
// integer (a text field's value). Nothing when the key is missing or holds anything else.
std::optional<std::int64_t> FilterFieldInteger(const PlistDict& row, std::string_view key);
// The size field as a number: an integer, a real, or a string holding only a number.
std::optional<double> FilterFieldSize(const PlistDict& row);

// The first failing check of `row` as its localised alert text, or nothing when the row can be
// stored. Only criteria whose box is on are checked; a row with none on fails last.
std::optional<std::string> SetFilterRow(const PlistDict& row);

}  // namespace marigold
