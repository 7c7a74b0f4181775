#include <syslog.h>

#include <chrono>
#include <thread>

#include "app/session_hooks.h"
#include "engine/copy_log_lines.h"
#include "engine/error_path.h"
#include "engine/run_state.h"
#include "util/strings_table.h"

namespace marigold {
namespace {

std::string RowKey(const VolumeRow& row) {
  return VolumeIdentityKey(row.scheme, row.user, row.host, row.mountPoint) + "|" + row.diskID + "|" + row.dmgPath;
}

// Servers reached over http and ftp often hold a volume a moment after its last file closed.
bool RetriesUnmount(const std::string& scheme) {
  return scheme == "http" || scheme == "https" || scheme == "ftp" || scheme == "ftps" || scheme == "dav" ||
         scheme == "davs";
}

}  // namespace

std::string SessionVolumesAndScripts::MountedPathOf(const VolumeRow& row) {
  if (row.volumeType == kVolumeRemote) return mMounter.MountedRemotePath(row.Remote()).value_or("");
  std::string mountPoint = row.mountPoint;
  for (const auto& [text, where] : mMountPoints) {
    if (mountPoint.empty() && text == VolumeRowText(row)) mountPoint = where;
  }
  return !mountPoint.empty() && mMounter.IsMountedVolumePath(mountPoint) ? mountPoint : std::string();
}

bool SessionVolumesAndScripts::MountAllVolumesForSession(RunState& state, const PlistDict& session) {
  mRows = ExecutiveVolumeRows(session);
  if (mRows.empty()) return true;
  std::string failures;
  for (const VolumeRow& row : mRows) {
    if (!state.IsRunOn()) break;
    const std::string text = VolumeRowText(row);
    mContext->proxy.SetTaskComment(GLS("Mounting the volume") + " " + Quoted(text));
    MountResult result;
    switch (row.volumeType) {
      case kVolumeRemote:
        if (MountedPathOf(row).empty()) result = mMounter.MountRemote(row.Remote());
        else result.code = kMountAlreadyMounted;
        break;
      case kVolumeLocalDisk:
        if (row.diskID.empty()) result.code = kMountParameterError;
        else result = mMounter.MountDisk(row.diskID, row.mountPoint);
        break;
      case kVolumeDiskImage:
        if (row.dmgPath.empty()) result.code = kMountImageFailed;
        else result = mMounter.MountImage(row.dmgPath, row.password, row.mountPoint);
        break;
      default:
        continue;
    }
    if (result.code == kMountAlreadyMounted) continue;
    if (result.code != 0) {
      failures += "\r" + Quoted(text);
      const std::string message = MountResultMessage(result.code);
      if (!message.empty()) failures += "\r" + message;
      mContext->systemLog.Write(LOG_WARNING, "MountAllVolumesForSession " + text + " Err: " +
                                                 std::to_string(result.code) + " " + result.detail);
      continue;
    }
    mMountedByRun.insert(RowKey(row));
    if (!result.mountPoint.empty()) mMountPoints.emplace_back(text, result.mountPoint);
    mContext->errors.AppendDetailedLine(GLS("Mounted the volume") + "\r" + Quoted(text));
  }
  bool goOn = true;
  if (!failures.empty()) goOn = mContext->errors.RecordItemError({GLS("Can't mount the volumes:"), failures});
  if (state.IsRunOn()) mContext->proxy.SetTaskComment(GLS("Scanning Folders…"));
  return goOn && state.IsRunOn();
}

bool SessionVolumesAndScripts::UnmountRow(const VolumeRow& row, const std::string& mountedAt, std::string& detail) {
  MountResult result;
  if (row.volumeType == kVolumeRemote) {
    result = mMounter.UnmountRemote(row.Remote());
    if (result.code != 0 && RetriesUnmount(row.scheme)) {
      std::this_thread::sleep_for(std::chrono::seconds(3));
      result = mMounter.UnmountRemote(row.Remote());
    }
  } else {
    result = mMounter.UnmountDisk(mountedAt);
  }
  detail = result.detail;
  return result.code == 0;
}

void SessionVolumesAndScripts::UnmountAllVolumesForSession(RunState& state, const PlistDict& session) {
  for (const VolumeRow& row : ExecutiveVolumeRows(session)) {
    if (!row.unmountVolume) continue;
    if (state.mDryRun && !mMountedByRun.contains(RowKey(row))) continue;
    const std::string mountedAt = MountedPathOf(row);
    if (mountedAt.empty()) continue;
    const std::string text = VolumeRowText(row);
    std::string detail;
    if (UnmountRow(row, mountedAt, detail)) {
      mMountedByRun.erase(RowKey(row));
      mContext->errors.AppendDetailedLine(GLS("Unmounted the volume") + "\r" + Quoted(text));
    } else {
      std::string message = GLS("Cannot unmount the volume:\r%@");
      if (const std::size_t at = message.find("%@"); at != std::string::npos) message.replace(at, 2, Quoted(text));
      mContext->errors.RecordItemError({message, detail.empty() ? "" : "\r", detail});
    }
  }
}

bool SessionVolumesAndScripts::IsOnUmountedVolume(RunState&, const std::string& path) {
  // A server volume is asked about through GIO: the folder GVfs shows for it may linger a moment
  // after it went.
  return marigold::IsOnUmountedVolume(mRows, path, [this](const VolumeRow& row) {
    return row.volumeType == kVolumeRemote ? mMounter.MountedRemotePath(row.Remote()).has_value()
                                           : mMounter.IsMountedVolumePath(row.mountPoint);
  });
}

}  // namespace marigold
