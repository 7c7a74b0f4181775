// The mounted volumes as /proc/self/mountinfo lists them, and which one holds a path.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace marigold {

struct MountEntry {
  std::string mountPoint;  // octal escapes ("\040" for a blank) decoded
  std::string type;        // with its subtype for FUSE: "fuse.sshfs"
  std::string source;
  bool readOnly = false;
};

// Parses mountinfo text; lines that do not have the expected shape are left out.
std::vector<MountEntry> ParseMountInfo(std::string_view text);
// The entry whose mount point is the longest whole-component prefix of the absolute `path`; a
// later entry wins over an earlier one with the same mount point (it is mounted over it).
std::optional<MountEntry> FindMount(const std::vector<MountEntry>& mounts, std::string_view path);
// Reads and parses /proc/self/mountinfo; empty when it cannot be read.
std::vector<MountEntry> ReadMountTable();

// Whether a volume of this type keeps no ownership (vfat, exfat, msdos, ntfs, ntfs3, fuseblk).
bool TypeIgnoresOwnership(std::string_view type);
// Whether a volume of this type matches names ignoring case whatever its options say.
bool TypeIsCaseInsensitive(std::string_view type);
// Whether a volume of this type is known to match names exactly (ext4 apart from case-folded
// folders, xfs, btrfs, tmpfs, ...).
bool TypeIsCaseSensitive(std::string_view type);

}  // namespace marigold
