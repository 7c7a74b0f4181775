// Building block of LinuxFileSystem (not for the engine): copying one regular file, the most
// common item, with as few calls as its safety allows.
#pragma once

#include <string>

#include "platform/file_system.h"
#include "platform/linux_paths.h"

namespace marigold::linux_detail {

// Copies the regular file `source` (described by `attributes`) to `dest`, which is absent or
// (with `replacing`) a file or link to be replaced. A new file is written unnamed in its folder
// and linked to its name once complete, where the volume allows it; otherwise, and for a
// replacement, it is written under a temporary name and renamed into place, a replacement's data
// made durable first. On failure nothing of the copy is left.
FsResult<CopyReport> CopyRegularFile(const AtPath& source, const ItemAttributes& attributes,
                                     const std::string& sourcePath, const AtPath& dest,
                                     const std::string& destPath, bool replacing,
                                     const CopyOptions& options);

}  // namespace marigold::linux_detail
