// The console's line with the date of a session's last exact synchronisation.
#pragma once

#include <optional>
#include <string>

#include "util/plist_value.h"

namespace marigold {

// "• Last Exact Sync: Nov 23 2026, 03:27:23" (local time) for the pair (`source`, `dest`) when
// the index folder holds its index; nothing otherwise. Reads the files, never changes them.
std::optional<std::string> LastExactSyncLine(const std::string& source, const std::string& dest,
                                             const std::string& indexFolder);
// The same for a session dictionary: only a session whose task is an exact synchronisation has
// the line; its folders are consoleDict's topFolder and bottomFolder.
std::optional<std::string> LastExactSyncLine(const PlistDict& session, const std::string& indexFolder);

}  // namespace marigold
