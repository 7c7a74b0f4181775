// What the boot-volume rules ask of the mounted volumes: whether a folder is the root of a volume
// that holds an installed system, whether a volume keeps owners, and which volume holds a path.
// Tests replace the mount-point question so that a plain folder can stand for a system disk.
#pragma once

#include <optional>
#include <string>

#include "platform/file_system.h"

namespace marigold {

class BootVolumes {
 public:
  explicit BootVolumes(FileSystem& fs) : mFs(fs) {}
  virtual ~BootVolumes() = default;

  // The mount point of the volume holding `path` (a final link is looked up by its own
  // location); nothing when the path is on no known volume.
  virtual std::optional<std::string> MountPointOf(const std::string& path);
  // Whether the volume holding `path` ignores owners and permissions (vfat, exfat, ntfs, ...).
  virtual bool IgnoresOwnership(const std::string& path);

  // A mount point that holds an installed system: "etc/os-release" and the folder "usr/bin".
  bool IsRootOfBootableVolume(const std::string& path);
  bool CanVolumeManageOwnership(const std::string& path) { return !IgnoresOwnership(path); }

 protected:
  FileSystem& mFs;
};

}  // namespace marigold
