#include "app/preferences_choices.h"

#include <map>

namespace marigold {

const std::vector<PreferenceChoice>& PreferenceChoices(const std::string& key) {
  // Tags are what the run reads: on error 3 asks, 2 goes on, 1 stops; "when" 2 means only after
  // errors; format 1 is RTF; log kind 2 detailed, 3 errors only; retention 0 by age, 1 by count.
  static const std::map<std::string, std::vector<PreferenceChoice>> kChoices{
      {"prefOnError", {{3, "Ask what to do"}, {2, "Skip and continue"}, {1, "Stop the task"}}},
      {"prefSaveLogFileWhen", {{1, "Always"}, {2, "Only when errors occur"}}},
      {"prefLogFileFormat", {{1, "Rich text (RTF)"}, {2, "Plain text"}}},
      {"prefLogKind", {{1, "Summary"}, {2, "Detailed"}, {3, "Errors only"}}},
      {"prefDeleteLogsPop", {{0, "days old"}, {1, "most recent logs kept"}}},
      {"prefSendEmailWhen", {{1, "Always"}, {2, "Only when errors occur"}}},
      {"prefUpdateFrequency", {{0, "Never"}, {1, "Daily"}, {2, "Weekly"}, {3, "Monthly"}}},
  };
  static const std::vector<PreferenceChoice> kNone;
  const auto found = kChoices.find(key);
  return found == kChoices.end() ? kNone : found->second;
}

}  // namespace marigold
