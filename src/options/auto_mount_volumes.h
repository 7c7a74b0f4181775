// The rules of a session's volume rows: which rows a run mounts, the identity key that makes two
// rows one volume, the messages of the mount results, the rows added from a mounted volume, and
// and the password stored with a row (always scrambled).
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "platform/volume_mounter.h"
#include "util/plist_value.h"

namespace marigold {

enum VolumeType : int { kVolumeNone = 0, kVolumeRemote = 1, kVolumeLocalDisk = 2, kVolumeDiskImage = 3 };

// One row of autoMountVolumeArray, its password unscrambled.
struct VolumeRow {
  bool onOff = false;
  std::string scheme, user, password, host, path, mountPoint;
  bool unmountVolume = false;
  int volumeType = kVolumeNone;
  std::string diskID, dmgPath;

  static VolumeRow FromDict(const PlistDict& row);
  RemoteVolume Remote() const { return RemoteVolume{scheme, user, password, host, path}; }
};

// "scheme://user@host" followed by the mount point: two rows with equal keys are one volume.
std::string VolumeIdentityKey(const std::string& scheme, const std::string& user, const std::string& host,
                              const std::string& mountPoint);

// Whether a run leaves the row alone: switched off, no type, or missing what its type needs (a
// scheme, user and host for a server; the disk or the image is checked when mounting, so that a
// missing one is reported).
bool VolumeRowIsSkipped(const VolumeRow& row);

// What messages and the log call the row: the server location, the disk or the image path.
std::string VolumeRowText(const VolumeRow& row);

// The session's rows a run mounts (none when auto-mount is off).
std::vector<VolumeRow> ExecutiveVolumeRows(const PlistDict& session);

// The alert text for a mount result; "" for success and for a cancelled attempt.
std::string MountResultMessage(int code);

// What a mounted volume gives a new row.
struct VolumeMountInfo {
  std::string scheme, user, host, path, mountPoint, diskID;
  int volumeType = kVolumeNone;
};

// Stores the volume in the first row whose host is empty. False when it lacks a scheme, user,
// host or mount point, or when a row with the same identity key exists; true otherwise (also
// when no row is free).
bool AddToAutoMountVolumeArray(PlistDict& autoMountDict, const VolumeMountInfo& info);

// The panel's try buttons on one row: the alert text, "" when there is nothing to say.
std::string TryOneMount(const VolumeRow& row, VolumeMounter& mounter);
std::string TryOneUnmount(const VolumeRow& row, VolumeMounter& mounter);

// What a mounted volume gives a row; a disk gives no server key.
VolumeMountInfo GetVolumeMountInfoDictionary(const MountedVolume& volume);

// True when `path` lies at or under the mount point of one of `rows` and that volume is not
// mounted now (`isMounted` answers for a row).
bool IsOnUmountedVolume(const std::vector<VolumeRow>& rows, const std::string& path,
                        const std::function<bool(const VolumeRow&)>& isMounted);

}  // namespace marigold
