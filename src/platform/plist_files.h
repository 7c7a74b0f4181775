// Property-list files read and written through a FileSystem, so that their failures can be made
// to happen on demand. Reads take any encoding; writes are XML and atomic (see StartFileWrite).
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "platform/file_system.h"
#include "util/plist_value.h"

namespace marigold {

// The dictionary held by the file at `path` (links followed); nothing when it cannot be read or
// does not hold a dictionary. Never modifies the file.
std::optional<PlistDict> ReadPlistDictFile(FileSystem& fs, const std::string& path);

// Replaces the file at `path` with `value` as XML; `mode` as StartFileWrite takes it. On failure
// the file is as it was and no temporary file remains.
FsStatus WriteXmlPlistFile(FileSystem& fs, const std::string& path, const PlistValue& value,
                           std::optional<std::uint32_t> mode = std::nullopt);

}  // namespace marigold
