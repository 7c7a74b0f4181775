// Scrambling of stored passwords and of the mail account dictionary. Not encryption: it only
// keeps secrets out of plain sight in documents and preferences, byte-compatible with older
// documents.
#pragma once

#include <string>
#include <string_view>

#include "util/plist_value.h"

namespace marigold {

// String -> scrambled bytes; "" gives empty data. A random digit is put in front first, so equal
// passwords are stored differently.
PlistData SetWellData(std::string_view password);
// The same with a given leading digit (0-9), for reproducible results in tests.
PlistData SetWellDataWithDigit(std::string_view password, char digit);
// Scrambled bytes -> string. Empty data gives ""; a result shorter than 3 characters gives "".
std::string GetWellData(const PlistData& data);

// Dictionary -> its XML property-list bytes, scrambled byte by byte (no leading digit).
PlistData SetWellDict(const PlistDict& dict);
// The reverse; nothing when the bytes do not unscramble to a dictionary.
std::optional<PlistDict> GetWellDict(const PlistData& data);

}  // namespace marigold
