#include "logging/preference_titles.h"

namespace marigold {
namespace {

template <std::size_t N>
const char* Pick(const char* const (&titles)[N], std::int64_t index) {
  return index >= 0 && static_cast<std::size_t>(index) < N ? titles[index] : "";
}

}  // namespace

const char* PrefOnErrorTitle(std::int64_t tag) {
  static const char* const kTitles[] = {"", "Stop the process", "Continue without asking", "Ask what to do"};
  return Pick(kTitles, tag);
}

const char* PrefSaveWhenTitle(std::int64_t tag) {
  static const char* const kTitles[] = {"", "Always", "Only when there are errors"};
  return Pick(kTitles, tag);
}

const char* PrefLogFileFormatTitle(std::int64_t tag) {
  static const char* const kTitles[] = {"", "RTF", "Plain text"};
  return Pick(kTitles, tag);
}

const char* PrefLogKindTitle(std::int64_t tag) {
  static const char* const kTitles[] = {"", "Summary only", "Detailed", "Errors only"};
  return Pick(kTitles, tag);
}

const char* PrefDeleteLogsPopTitle(std::int64_t tag) {
  static const char* const kTitles[] = {"Delete logs older than (days)", "Keep only the newest logs"};
  return Pick(kTitles, tag);
}

}  // namespace marigold
