// The choices of the preferences panel's pop-ups and radio groups: each tag with its title, in
// the order the panel offers them, so that every front end offers the same values with the same
// words as the run log prints.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace marigold {

struct PreferenceChoice {
  std::int64_t tag;
  std::string title;  // English text, looked up with GLS
};

// For a radio group or pop-up key of the preferences ("prefOnError", "prefLogKind", ...); empty
// for any other key.
std::vector<PreferenceChoice> PreferenceChoices(const std::string& key);

}  // namespace marigold
