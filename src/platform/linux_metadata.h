// Building blocks of LinuxFileSystem (not for the engine): carrying an item's metadata onto
// another item.
#pragma once

#include <optional>
#include <string>

#include "platform/file_system.h"
#include "platform/linux_paths.h"

namespace marigold::linux_detail {

// Whether setting a link's own times on this item's volume leaves the link's target alone
// (true on local volumes; network and FUSE volumes may pass the change on to the target).
bool LinkTimesAreSafe(const AtPath& item);
// Whether the item's volume keeps no ownership or permissions (FAT, exFAT, NTFS, FUSE-backed
// disks), so refusals to change them are expected.
bool VolumeIgnoresOwnership(const AtPath& item);

// Gives `dest` the metadata of `source`: ownership when permitted, mode, user extended
// attributes (those only `dest` has stay), access lists, then modification and access times.
FsStatus ApplyMetadata(const AtPath& source, const ItemAttributes& sourceAttributes,
                       const AtPath& dest, const ItemAttributes& destAttributes,
                       const std::string& destPathForErrors);

// The same for a new file still open for writing, through its descriptors alone: ownership
// when permitted, mode, user extended attributes, access lists, `backupDate` when given (a
// refusal goes to `backupDateError`, it does not fail the call), then the times.
FsStatus ApplyFileMetadata(int sourceFd, int destFd, const ItemAttributes& sourceAttributes,
                           std::optional<std::int64_t> backupDate, int& backupDateError,
                           CopyHints* hints, const std::string& destPathForErrors);

}  // namespace marigold::linux_detail
