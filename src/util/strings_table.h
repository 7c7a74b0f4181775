// The language tables ("Localizable.strings") and the text lookup GLS that every user-visible
// text passes through. The English text is the key and also the fallback.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace marigold {

using StringTable = std::map<std::string, std::string, std::less<>>;

// Parses the ".strings" format: "key" = "value"; pairs, /* */ and // comments, backslash escapes
// (\n \r \t \" \\ \UXXXX), UTF-8 or UTF-16 (with byte-order mark). Nothing on a syntax error.
std::optional<StringTable> ParseStringsFile(std::string_view bytes, std::string* error = nullptr);

// The languages to look for, in order: LANGUAGE (colon-separated), then LC_ALL, LC_MESSAGES,
// LANG (language part only), ending with "en" when it is not already listed.
std::vector<std::string> PreferredLanguages();

// Finds "<resources>/<lang>.lproj/Localizable.strings" for the first language whose file exists
// and reads it. Nothing when no table can be found or read.
std::optional<StringTable> LoadStringTable(const std::vector<std::string>& resourceFolders,
                                           const std::vector<std::string>& languages,
                                           std::string* foundPath = nullptr);

// Installs the table that GLS reads from. Call once at start-up, before any worker runs.
void SetStringTable(StringTable table);

// The localised text of `key`: the key itself when the table has no entry or an empty one;
// "" for an empty key.
std::string GLS(std::string_view key);

}  // namespace marigold
