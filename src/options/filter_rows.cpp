#include "options/filter_rows.h"

#include <cerrno>
#include <cmath>
#include <cstdlib>

#include "util/strings_table.h"

namespace marigold {
namespace {

// A text field's value: surrounding blanks are ignored, anything else left over is not a number.
std::string_view Trimmed(std::string_view text) {
  const auto first = text.find_first_not_of(" \t\r\n");
  if (first == std::string_view::npos) return {};
  const auto last = text.find_last_not_of(" \t\r\n");
  return text.substr(first, last - first + 1);
}

std::optional<double> ParseNumber(std::string_view text, bool wholeOnly) {
  const std::string trimmed(Trimmed(text));
  if (trimmed.empty()) return std::nullopt;
  const char* begin = trimmed.c_str();
  char* end = nullptr;
  errno = 0;
  if (wholeOnly) {
    const long long value = std::strtoll(begin, &end, 10);
    if (errno != 0 || *end != '\0') return std::nullopt;
    return static_cast<double>(value);
  }
  const double value = std::strtod(begin, &end);
  if (errno != 0 || *end != '\0' || !std::isfinite(value)) return std::nullopt;
  return value;
}

std::optional<std::string> CheckDate(const PlistDict& row, const std::string& prefix) {
  const auto year = FilterFieldInteger(row, prefix + "Year");
  if (!year || *year < 1904) return GLS("Please insert a valid Year number.");
  const auto month = FilterFieldInteger(row, prefix + "Month");
  if (!month || *month < 1 || *month > 12) return GLS("Please insert a valid Month number.");
  const auto day = FilterFieldInteger(row, prefix + "Day");
  if (!day || *day < 1 || *day > FilterDaysInMonth(*month, *year)) return GLS("Please insert a valid Day number.");
  return std::nullopt;
}

bool TextIsEmpty(const PlistDict& row, std::string_view key) { return row.GetString(key).empty(); }

struct TextCheck {
  const char* on;
  const char* field;
  const char* message;
};

// In the order the panel checks them, after the dates and the size.
constexpr TextCheck kTextChecks[] = {
    {"filterTypeOn", "filterTypeField", "Please insert a valid Type."},
    {"filterCreatorOn", "filterCreatorField", "Please insert a valid Creator."},
    {"filterOwnerOn", "filterOwnerField", "Please insert a valid Owner name or ID."},
    {"filterGroupOn", "filterGroupField", "Please insert a valid Group name or ID."},
};

}  // namespace

int FilterDaysInMonth(std::int64_t month, std::int64_t year) {
  switch (month) {
    case 4:
    case 6:
    case 9:
    case 11:
      return 30;
    case 2:
      return year % 4 == 0 ? 29 : 28;
    default:
      return month >= 1 && month <= 12 ? 31 : 0;
  }
}

std::optional<std::int64_t> FilterFieldInteger(const PlistDict& row, std::string_view key) {
  const PlistValue* value = row.Find(key);
  if (value == nullptr) return std::nullopt;
  if (const auto* integer = value->AsInteger()) return *integer;
  if (const auto* real = value->AsReal()) {
    if (!std::isfinite(*real) || std::fabs(*real) > 9e18) return std::nullopt;
    return static_cast<std::int64_t>(*real);
  }
  if (const auto* text = value->AsString()) {
    if (auto number = ParseNumber(*text, true)) return static_cast<std::int64_t>(*number);
  }
  return std::nullopt;
}

std::optional<double> FilterFieldSize(const PlistDict& row) {
  const PlistValue* value = row.Find("filterFileSizeField");
  if (value == nullptr) return std::nullopt;
  if (const auto* integer = value->AsInteger()) return static_cast<double>(*integer);
  if (const auto* real = value->AsReal()) return std::isfinite(*real) ? std::optional<double>(*real) : std::nullopt;
  if (const auto* text = value->AsString()) return ParseNumber(*text, false);
  return std::nullopt;
}

std::optional<std::string> SetFilterRow(const PlistDict& row) {
  bool anyOn = false;
  if (row.IsFlagOn("filterFileNameOn")) {
    anyOn = true;
    if (TextIsEmpty(row, "filterFileNameField")) return GLS("Please insert a valid file name.");
  }
  if (row.IsFlagOn("filterCreationDateOn")) {
    anyOn = true;
    if (auto message = CheckDate(row, "filterCreationDate")) return message;
  }
  if (row.IsFlagOn("filterModificationDateOn")) {
    anyOn = true;
    if (auto message = CheckDate(row, "filterModificationDate")) return message;
  }
  if (row.IsFlagOn("filterFileSizeOn")) {
    anyOn = true;
    const auto size = FilterFieldSize(row);
    if (!size || *size < 0) return GLS("Please insert a valid File Size.");
  }
  for (const TextCheck& check : kTextChecks) {
    if (!row.IsFlagOn(check.on)) continue;
    anyOn = true;
    if (TextIsEmpty(row, check.field)) return GLS(check.message);
  }
  // The kind criterion has no field to check, but it does count as a criterion.
  if (row.IsFlagOn("filterKindOn")) anyOn = true;
  if (!anyOn) return GLS("Please define a criteria for this filter.");
  return std::nullopt;
}

}  // namespace marigold
