// Rules of the Conflicts panel that do not need widgets.
#pragma once

#include "util/plist_value.h"

namespace marigold {

// The conflict rules of a new session.
PlistDict DefaultConflictsDict();

}  // namespace marigold
