#include "platform/file_system.h"

#include "platform/linux_file_system.h"

namespace marigold {

FsResult<bool> StillMatches(FileSystem& fs, const std::string& path, const ItemSnapshot& snapshot) {
  auto now = fs.GetAttributes(path);
  if (!now) {
    if (now.Error().IsMissing()) return !snapshot.exists;
    return now.Error();
  }
  return snapshot.Matches(ItemSnapshot::Of(now.Value()));
}

FileSystem& SystemFileSystem() {
  static LinuxFileSystem fs;
  return fs;
}

}  // namespace marigold
