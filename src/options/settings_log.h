// The settings block of the run log.
#pragma once

#include <string>

#include "util/plist_value.h"

namespace marigold {

// "\r• Settings: " then one "\r\t<title>: <value>" line per setting the log shows (the task by
// its radio title, the flags as localised Yes or No, the two inverted boxes as their boxes state
// them), ending with "\r". The attribute check and the sub-folder settings are not shown.
std::string GetLog(const PlistDict& settings);

}  // namespace marigold
