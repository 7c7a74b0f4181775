// Rules of the Settings panel that do not need widgets.
#pragma once

#include <cstdint>

#include "util/plist_value.h"

namespace marigold {

// The task settings of a new session for `task` (1 synchronise, 2 backup).
PlistDict DefaultSettingsDict(std::int64_t task);

}  // namespace marigold
