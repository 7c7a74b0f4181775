// Mounting and unmounting the volumes a session names: remote server volumes through GIO/GVfs
// (the desktop's own way to reach servers), local disks and disk images through udisks2 when its
// service answers, else directly as root. Results are the codes the auto-mount rules know
// (0 success, kMountAlreadyMounted, kMountNotAuthorized, ...). Calls block until the system
// answers; any thread may call them.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace marigold {

inline constexpr int kMountNotEnoughInformation = 1;
inline constexpr int kMountHostLookupFailed = 2;
inline constexpr int kMountUnableToPing = 5;
inline constexpr int kMountNoAnswer = 6;
inline constexpr int kMountUrlNotValid = 7;
inline constexpr int kMountImageFailed = 8;
inline constexpr int kMountBusy = -47;
inline constexpr int kMountParameterError = -50;
inline constexpr int kMountCancelled = -128;
inline constexpr int kMountNoServers = -1069;
inline constexpr int kMountNotAuthorized = -5023;
inline constexpr int kMountAlreadyMounted = -5062;

// A server volume as a row names it; `host` may carry ":port".
struct RemoteVolume {
  std::string scheme, user, password, host, path;
};

struct MountResult {
  int code = 0;
  std::string mountPoint;  // where the volume's files are, after a mount
  std::string detail;      // what the system said, for the log and the system log
};

// A mounted volume as a row would name it: a server volume by its location, a disk by its device.
struct MountedVolume {
  std::string scheme, user, host, path;  // server volumes
  std::string diskID;                    // disks and images ("/dev/sdb1", "/dev/loop3")
  std::string mountPoint;                // where its files are
};

// "scheme://user@host/path" with the user and path percent-escaped; never holds the password.
std::string RemoteLocationText(const RemoteVolume& volume);

class VolumeMounter {
 public:
  virtual ~VolumeMounter() = default;
  // The local folder of a mounted server volume, or nothing when it is not mounted.
  virtual std::optional<std::string> MountedRemotePath(const RemoteVolume& volume) = 0;
  // Mounts with the user and the password (an empty password tries without one).
  virtual MountResult MountRemote(const RemoteVolume& volume) = 0;
  virtual MountResult UnmountRemote(const RemoteVolume& volume) = 0;
  // `diskID`: a device path, "UUID=..." or "LABEL=...". `mountPoint` may be empty: then the
  // system (udisks2) or a folder under /run/marigold is chosen.
  virtual MountResult MountDisk(const std::string& diskID, const std::string& mountPoint) = 0;
  // A raw or ISO image on a loop device; with a password, a LUKS container opened with it.
  virtual MountResult MountImage(const std::string& imagePath, const std::string& password,
                                 const std::string& mountPoint) = 0;
  // Unmounts the volume at `mountPoint`; a loop device or LUKS mapping under it is detached.
  virtual MountResult UnmountDisk(const std::string& mountPoint) = 0;
  // Whether a folder is where a volume is mounted now (a mount point, or a mounted server
  // volume's folder inside the GVfs folder).
  virtual bool IsMountedVolumePath(const std::string& mountPoint) = 0;
  // Server volumes that GIO knows, then the disks mounted from block devices.
  virtual std::vector<MountedVolume> MountedVolumes() = 0;
};

// The system's: GIO for servers, udisks2 or mount/losetup/cryptsetup for disks.
VolumeMounter& SystemVolumeMounter();

}  // namespace marigold
