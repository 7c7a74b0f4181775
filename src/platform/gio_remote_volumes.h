// Server volumes through GIO: mounting a location with a mount operation that answers the user
// and password, finding its mount, unmounting it. Each call runs its own main context, so it may
// be made from any thread.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "platform/volume_mounter.h"

namespace marigold {

std::optional<std::string> GioMountedRemotePath(const RemoteVolume& volume);
MountResult GioMountRemote(const RemoteVolume& volume);
MountResult GioUnmountRemote(const RemoteVolume& volume);
// The server volumes mounted now, from their root locations.
std::vector<MountedVolume> GioMountedRemoteVolumes();
// The auto-mount code for a GIO error code (GIOErrorEnum), given whether a password was already
// refused once during the attempt.
int MountCodeForGioError(int gioErrorCode, bool passwordRefused);

}  // namespace marigold
