// The choices of the preferences panel's pop-ups and radio groups: each tag with its title, so
// that the desktop panel and any other front end offer the same values.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace marigold {

struct PreferenceChoice {
  std::int64_t tag;
  const char* title;  // English text, looked up with GLS
};

// For a radio group or pop-up key of the preferences ("prefOnError", "prefLogKind", ...); empty
// for any other key.
const std::vector<PreferenceChoice>& PreferenceChoices(const std::string& key);

}  // namespace marigold
