// The timers' part of a session's block in the run log.
#pragma once

#include <string>

#include "util/plist_value.h"

namespace marigold {

// "• Timers: \r" and one entry per timer row that is on and valid (start, interval, end, days),
// rows separated by "\r\t" and 98 "-"; "" when the session's timers are off. Dates are shown in
// `localeName` and `timeZone` ("" for the user's).
std::string TimersLog(const PlistDict& timerDict, const std::string& localeName = "", const std::string& timeZone = "");

}  // namespace marigold
