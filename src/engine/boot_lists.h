// The items of a system volume that a task never copies, and the folders it creates empty on the
// other side (their contents belong to the running system, not to the volume).
#pragma once

#include "engine/boot_volumes.h"
#include "engine/run_state.h"

namespace marigold {

// Fills state.bootItemsToDontCopyArray and state.bootFoldersToCopyEmptyArray for the task whose
// folders are state.gSourceFolder and state.gDestFolder: every entry as a path from "/", and again
// under the mount point of each task folder that lies on another volume than "/".
void MakeItemsToDontCopyList(RunState& state, BootVolumes& volumes);

// Whether the scan of the task whose folders are `source` and `dest` never walks into `item`, an
// item directly inside one of them: a folder it copies empty, or an item it never copies.
bool IsNeverWalked(const std::string& item, const std::string& source, const std::string& dest, BootVolumes& volumes);

}  // namespace marigold
