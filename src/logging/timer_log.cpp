#include "logging/timer_log.h"

#include <cstdio>

#include "util/quillon_additions.h"
#include "util/strings_table.h"

namespace marigold {
namespace {

std::string Count(std::int64_t n, const char* one, const char* many) {
  return std::to_string(n) + " " + GLS(n == 1 ? one : many);
}

std::string IntervalText(const PlistDict& row) {
  std::string text;
  auto add = [&text](const std::string& part) { text += (text.empty() ? "" : ", ") + part; };
  if (const std::int64_t n = row.GetInt("intervalYears"); n > 0) add(Count(n, "year", "years"));
  if (const std::int64_t n = row.GetInt("intervalMonths"); n > 0) add(Count(n, "month", "months"));
  if (const std::int64_t n = row.GetInt("intervalDays"); n > 0) add(Count(n, "day", "days"));
  const std::int64_t hours = row.GetInt("intervalHours"), minutes = row.GetInt("intervalMinutes");
  if (hours + minutes > 0) {
    char hm[48];
    std::snprintf(hm, sizeof hm, "%02lld:%02lld", static_cast<long long>(hours), static_cast<long long>(minutes));
    add(hm);
  }
  return text;
}

std::string DaysText(const PlistDict& row) {
  static const char* const kKeys[] = {"onlyMonday", "onlyTuesday", "onlyWednesday", "onlyThursday",
                                      "onlyFriday", "onlySaturday", "onlySunday"};
  static const char* const kNames[] = {"Mon", "Tue", "Wed", "Thu", "Fri", "Sat", "Sun"};
  std::string text;
  int set = 0;
  for (int i = 0; i < 7; ++i) {
    if (!row.IsFlagOn(kKeys[i])) continue;
    ++set;
    text += (text.empty() ? "" : ", ") + GLS(kNames[i]);
  }
  return set == 7 ? GLS("Everyday") : text;
}

}  // namespace

std::string TimersLog(const PlistDict& timerDict, const std::string& localeName, const std::string& timeZone) {
  if (!timerDict.IsFlagOn("timerOn")) return "";
  auto date = [&](const PlistDict& row, const char* key, const char* pattern) {
    const std::optional<PlistDate> value = row.GetDate(key);
    return value ? StringWithFormat(*value, pattern, localeName, timeZone) : std::string();
  };
  std::string log = GLS("• Timers: ") + "\r";
  bool first = true;
  const PlistArray* rows = timerDict.GetArray("timerArray");
  for (std::size_t i = 0; rows != nullptr && i < rows->size(); ++i) {
    const PlistDict* row = (*rows)[i].AsDict();
    if (row == nullptr || !row->IsFlagOn("onOff") || !row->IsFlagOn("valid")) continue;
    if (!first) log += "\r\t" + std::string(98, '-') + "\r";
    first = false;
    log += "\t" + std::to_string(i + 1) + ":\t" + GLS("Start at:") + "\t\t" + date(*row, "start", "dd MMM yyyy, HH:mm");
    if (row->IsFlagOn("intervalOn")) log += "\r\t\t" + GLS("Interval:") + "\t\t" + IntervalText(*row);
    if (row->IsFlagOn("endOn"))
      log += "\r\t\t" + GLS("End at:") + "\t\t" +
             date(*row, "end", row->IsFlagOn("endDateOn") ? "dd MMM yyyy, HH:mm" : "HH:mm");
    log += "\r\t\t" + GLS("Execute On:") + "\t" + DaysText(*row);
  }
  return log + "\r";
}

}  // namespace marigold
