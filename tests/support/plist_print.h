// Failures show property-list dictionaries as their XML, so that a difference can be read.
// Every test file of this program that compares dictionaries includes it (one printer per program).
#pragma once

#include <ostream>

#include "util/plist_io.h"
#include "util/plist_value.h"

namespace marigold {
inline void PrintTo(const PlistDict& dict, std::ostream* out) { *out << "\n" << ToXmlPlist(PlistValue(dict)); }
}  // namespace marigold
