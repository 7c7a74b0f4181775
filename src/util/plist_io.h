// Reading and writing property lists: any encoding in (XML or binary), XML out. Input is checked for nesting depth, object-graph size and cycles before the parser
// sees it, so a hostile or damaged file is refused instead of exhausting the stack or memory.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "util/plist_value.h"

namespace marigold {

struct PlistLimits {
  std::size_t maxBytes = std::size_t{1} << 30;  // files above this are refused unread
  int maxDepth = 256;                           // nesting of arrays and dictionaries
  std::size_t maxNodes = 50'000'000;            // values after shared binary objects are expanded
};

// Parses XML or binary property-list bytes. On failure returns nothing and, when `error` is
// given, says why in a sentence.
std::optional<PlistValue> ParsePlist(std::string_view bytes, std::string* error = nullptr,
                                     const PlistLimits& limits = {});

// ParsePlist for a root that must be a dictionary.
std::optional<PlistDict> ParsePlistDict(std::string_view bytes, std::string* error = nullptr,
                                        const PlistLimits& limits = {});

// Reads a file whose root must be a dictionary. Follows symbolic links. Never modifies the file.
// The reason given on failure does not name the file: the caller does.
std::optional<PlistDict> ReadPlistDictFile(const std::string& path, std::string* error = nullptr,
                                           const PlistLimits& limits = {});

// The XML serialisation; the same value always gives the same bytes.
std::string ToXmlPlist(const PlistValue& value);

// Whole-file read, for comparisons and small files; nothing when it cannot be read.
std::optional<std::string> ReadWholeFile(const std::string& path, std::size_t maxBytes = std::size_t{1} << 30);

}  // namespace marigold
