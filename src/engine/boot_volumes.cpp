#include "engine/boot_volumes.h"

namespace marigold {

std::optional<std::string> BootVolumes::MountPointOf(const std::string& path) {
  auto volume = mFs.GetVolume(path);
  if (!volume) return std::nullopt;
  return volume.Value().mountPoint;
}

bool BootVolumes::IgnoresOwnership(const std::string& path) {
  auto volume = mFs.GetVolume(path);
  return volume && volume.Value().ignoresOwnership;
}

bool BootVolumes::IsRootOfBootableVolume(const std::string& path) {
  if (MountPointOf(path) != path) return false;
  const std::string prefix = path == "/" ? "" : path;
  auto release = mFs.GetAttributes(prefix + "/etc/os-release");
  auto binaries = mFs.GetAttributes(prefix + "/usr/bin");
  // Many systems keep os-release as a link into /usr/lib; either form counts.
  const bool hasRelease = release && release.Value().kind != ItemKind::kFolder;
  const bool hasBinaries = binaries && (binaries.Value().IsFolder() || binaries.Value().kind == ItemKind::kSymlink);
  return hasRelease && hasBinaries;
}

}  // namespace marigold
