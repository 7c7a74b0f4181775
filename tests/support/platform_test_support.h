// Real trees and real volumes for tests that need a disk of their own: temporary folders, tmpfs and
// loop-mounted images, and commands.
#pragma once

#include <sys/types.h>

#include <functional>
#include <memory>
#include <string>

#include "support/temp_folder.h"
#include "support/tree_values.h"

namespace marigold::test {

bool IsRoot();

// A mounted volume made for one test; unmounted and deleted with its image when it goes away.
class TestVolume {
 public:
  // "tmpfs" (with `sizeMiB`), "ext4", "xfs", "btrfs" or "exfat" (through FUSE; a loop image). Nothing, with `whyNot`
  // set, when the volume cannot be made here (not root, tool missing, mount refused).
  // `options` are handed to mount with -o.
  static std::unique_ptr<TestVolume> Make(const std::string& type, int sizeMiB, std::string* whyNot,
                                          const std::string& options = "");
  ~TestVolume();
  const std::string& Path() const { return mMountPoint; }

 private:
  TestVolume() = default;
  std::string mMountPoint, mImage, mLoopDevice;
};

// Writes `content` to `path` (created or truncated) and sets its mode.
void WriteFile(const std::string& path, const std::string& content, mode_t mode = 0644);
using trees::ReadFile;  // the whole content, or "<missing>"
using marigold::TempFolder;
// Runs `command` with sh -c; returns its exit status and puts standard output in `output`.
int RunCommand(const std::string& command, std::string* output = nullptr);
// Names in the folder that hold the engine's temporary marker.
int CountTemporaryItems(const std::string& folder);

inline constexpr uid_t kThrowawayUser = 54321;

}  // namespace marigold::test
