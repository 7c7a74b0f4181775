// The question asked before a run that the user starts by hand, when the preferences ask for a
// confirmation.
#pragma once

#include <cstdint>
#include <string>

#include "platform/file_system.h"
#include "util/plist_value.h"

namespace marigold {

// The confirmation text for running `sessionIndex` of `document` ("All Sessions" is the session
// count + 1): every session, the session's multiple list, or its one folder pair named by the
// last components of its two folders. The pair is called "folder" when the source is really a
// folder (not a package), else "file"; `fs` is asked only that.
std::string AreYouSureString(const PlistDict& document, std::int64_t sessionIndex, FileSystem& fs);

// The preference that asks for the confirmation: on unless it is 0.
bool AsksConfirmation(const PlistDict& preferences);

}  // namespace marigold
