// The order of names in a folder listing: ignoring case (simple case folding per code point),
// with byte order breaking ties so that names differing only in case keep a fixed order. Names
// are bytes; a byte that is not part of valid UTF-8 sorts after every character, by its value.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace marigold {

// Negative, zero or positive as a sorts before, with or after b. Zero only for equal bytes.
int CompareItemNames(std::string_view a, std::string_view b);
// Whether the names are equal once case is folded ("Read Me" and "READ ME").
bool ItemNamesMatchIgnoringCase(std::string_view a, std::string_view b);
// Sorts in place by CompareItemNames.
void SortItemNames(std::vector<std::string>& names);

}  // namespace marigold
