#include "engine/boot_lists.h"

#include <array>
#include <string_view>

namespace marigold {
namespace {

constexpr std::array<std::string_view, 9> kFoldersToCopyEmpty = {
    "/dev", "/Volumes", "/Network", "/proc", "/sys", "/run", "/tmp", "/mnt", "/media"};

constexpr std::array<std::string_view, 16> kItemsToDontCopy = {
    "/.DS_Store", "/.fseventsd", "/.Trashes", "/.vol", "/automount", "/Cleanup At Startup",
    "/Desktop DB", "/Desktop DF", "/File Transfer Folder", "/mach", "/mach.sym",
    "/TheVolumeSettingsFolder", "/Trash", "/TheFindByContentFolder", "/.Spotlight-V100", "/lost+found"};

void AddAll(RunState& state, const std::string& prefix) {
  for (std::string_view entry : kFoldersToCopyEmpty) state.bootFoldersToCopyEmptyArray.insert(prefix + std::string(entry));
  for (std::string_view entry : kItemsToDontCopy) state.bootItemsToDontCopyArray.insert(prefix + std::string(entry));
}

}  // namespace

void MakeItemsToDontCopyList(RunState& state, BootVolumes& volumes) {
  state.bootFoldersToCopyEmptyArray.clear();
  state.bootItemsToDontCopyArray.clear();
  AddAll(state, "");
  const auto rootVolume = volumes.MountPointOf("/");
  for (const std::string* folder : {&state.gSourceFolder, &state.gDestFolder}) {
    const auto volume = volumes.MountPointOf(*folder);
    if (volume && volume != rootVolume && *volume != "/") AddAll(state, *volume);
  }
}

bool IsNeverWalked(const std::string& item, const std::string& source, const std::string& dest, BootVolumes& volumes) {
  RunState task;
  task.gSourceFolder = source;
  task.gDestFolder = dest;
  MakeItemsToDontCopyList(task, volumes);
  return task.bootFoldersToCopyEmptyArray.contains(item) || task.bootItemsToDontCopyArray.contains(item);
}

}  // namespace marigold
