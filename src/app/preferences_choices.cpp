#include "app/preferences_choices.h"

#include "logging/preference_titles.h"

namespace marigold {
namespace {

std::vector<PreferenceChoice> Choices(std::initializer_list<std::int64_t> tags, const char* (*title)(std::int64_t)) {
  std::vector<PreferenceChoice> choices;
  for (std::int64_t tag : tags) choices.push_back({tag, title(tag)});
  return choices;
}

const char* UpdateFrequencyTitle(std::int64_t tag) {
  static const char* const kTitles[] = {"Never", "Daily", "Weekly", "Monthly"};
  return tag >= 0 && tag < 4 ? kTitles[tag] : "";
}

}  // namespace

std::vector<PreferenceChoice> PreferenceChoices(const std::string& key) {
  // Asking comes first: it is the default and the safest answer to an error.
  if (key == "prefOnError") return Choices({3, 2, 1}, PrefOnErrorTitle);
  if (key == "prefSaveLogFileWhen" || key == "prefSendEmailWhen") return Choices({1, 2}, PrefSaveWhenTitle);
  if (key == "prefLogFileFormat") return Choices({1, 2}, PrefLogFileFormatTitle);
  if (key == "prefLogKind") return Choices({1, 2, 3}, PrefLogKindTitle);
  if (key == "prefDeleteLogsPop") return Choices({0, 1}, PrefDeleteLogsPopTitle);
  if (key == "prefUpdateFrequency") return Choices({0, 1, 2, 3}, UpdateFrequencyTitle);
  return {};
}

}  // namespace marigold
