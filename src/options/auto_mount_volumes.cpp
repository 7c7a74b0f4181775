#include "options/auto_mount_volumes.h"

#include "model/document_model.h"
#include "util/strings_table.h"
#include "util/well_scramble.h"

namespace marigold {
namespace {

bool IsAtOrUnder(const std::string& path, const std::string& folder) {
  if (folder.empty() || !path.starts_with(folder)) return false;
  return path.size() == folder.size() || folder.back() == '/' || path[folder.size()] == '/';
}

// The first `marker` of `pattern` replaced by `value`.
std::string Fill(std::string pattern, std::string_view marker, const std::string& value) {
  if (const std::size_t at = pattern.find(marker); at != std::string::npos) pattern.replace(at, marker.size(), value);
  return pattern;
}

}  // namespace

VolumeRow VolumeRow::FromDict(const PlistDict& row) {
  VolumeRow result;
  result.onOff = row.GetInt("onOff") == 1;
  result.scheme = row.GetString("scheme");
  result.user = row.GetString("user");
  if (const PlistData* password = row.GetData("password")) result.password = GetWellData(*password);
  result.host = row.GetString("host");
  result.path = row.GetString("path");
  result.mountPoint = row.GetString("mountPoint");
  result.unmountVolume = row.GetInt("unmountVolume") == 1;
  result.volumeType = static_cast<int>(row.GetInt("volumeType"));
  result.diskID = row.GetString("diskID");
  result.dmgPath = row.GetString("dmgPath");
  return result;
}

std::string VolumeIdentityKey(const std::string& scheme, const std::string& user, const std::string& host,
                              const std::string& mountPoint) {
  return scheme + "://" + user + "@" + host + mountPoint;
}

bool VolumeRowIsSkipped(const VolumeRow& row) {
  if (!row.onOff) return true;
  switch (row.volumeType) {
    case kVolumeRemote: return row.scheme.empty() || row.user.empty() || row.host.empty();
    case kVolumeLocalDisk:
    case kVolumeDiskImage: return false;
    default: return true;
  }
}

std::string VolumeRowText(const VolumeRow& row) {
  switch (row.volumeType) {
    case kVolumeLocalDisk: return row.diskID;
    case kVolumeDiskImage: return row.dmgPath;
    default: return RemoteLocationText(row.Remote());
  }
}

std::vector<VolumeRow> ExecutiveVolumeRows(const PlistDict& session) {
  std::vector<VolumeRow> rows;
  const PlistDict* block = session.GetDict("autoMountDict");
  if (block == nullptr || block->GetInt("autoMountVolumeOn") != 1) return rows;
  const PlistArray* array = block->GetArray("autoMountVolumeArray");
  if (array == nullptr) return rows;
  for (const PlistValue& value : *array) {
    const PlistDict* dict = value.AsDict();
    if (dict == nullptr) continue;
    VolumeRow row = VolumeRow::FromDict(*dict);
    if (!VolumeRowIsSkipped(row)) rows.push_back(std::move(row));
  }
  return rows;
}

std::string MountResultMessage(int code) {
  switch (code) {
    case 0:
    case kMountCancelled: return {};
    case kMountNotEnoughInformation: return GLS("Can't mount the volume. Not enough information to ping the host.");
    case kMountHostLookupFailed: return GLS("Can't mount the volume. Unable to lookup the host address.");
    case 3: return GLS("Can't mount the volume. Unable to create socket for the host.");
    case 4: return GLS("Can't mount the volume. Error waiting for packet response from the host.");
    case kMountUnableToPing: return GLS("Can't mount the volume. Unable to ping the host.");
    case kMountNoAnswer: return GLS("Can't mount the volume. No answer from the host.");
    case kMountUrlNotValid: return GLS("Can't mount the volume. URL not valid.");
    case kMountImageFailed: return GLS("Can't mount the dmg volume.");
    case kMountParameterError: return GLS("Can't mount the volume. Parameter error.");
    case kMountNoServers: return GLS("Can't mount the volume. No servers at that address.");
    case kMountNotAuthorized: return GLS("Can't mount the volume. User or password not authorized.");
    case kMountAlreadyMounted: return GLS("The volume is already mounted.");
    default: return Fill(GLS("Can't mount the volume. Err %d."), "%d", std::to_string(code));
  }
}

bool AddToAutoMountVolumeArray(PlistDict& autoMountDict, const VolumeMountInfo& info) {
  if (info.scheme.empty() || info.user.empty() || info.host.empty() || info.mountPoint.empty()) return false;
  PlistArray* rows = autoMountDict.GetArray("autoMountVolumeArray");
  if (rows == nullptr) return true;
  const std::string key = VolumeIdentityKey(info.scheme, info.user, info.host, info.mountPoint);
  for (const PlistValue& value : *rows) {
    const PlistDict* row = value.AsDict();
    if (row != nullptr && VolumeIdentityKey(row->GetString("scheme"), row->GetString("user"), row->GetString("host"),
                                            row->GetString("mountPoint")) == key)
      return false;
  }
  for (PlistValue& value : *rows) {
    PlistDict* row = value.AsDict();
    if (row == nullptr || !row->GetString("host").empty()) continue;
    row->Set("onOff", 1);
    row->Set("scheme", info.scheme);
    row->Set("user", info.user);
    row->Set("host", info.host);
    row->Set("path", info.path);
    row->Set("mountPoint", info.mountPoint);
    row->Set("volumeType", static_cast<std::int64_t>(info.volumeType));
    if (!info.diskID.empty()) row->Set("diskID", info.diskID);
    break;
  }
  return true;
}

std::string TryOneMount(const VolumeRow& row, VolumeMounter& mounter) {
  switch (row.volumeType) {
    case kVolumeRemote:
      if (row.scheme.empty() || row.host.empty()) return MountResultMessage(kMountNotEnoughInformation);
      if (mounter.MountedRemotePath(row.Remote())) return MountResultMessage(kMountAlreadyMounted);
      return MountResultMessage(mounter.MountRemote(row.Remote()).code);
    case kVolumeLocalDisk:
      return MountResultMessage(row.diskID.empty() ? kMountParameterError
                                                   : mounter.MountDisk(row.diskID, row.mountPoint).code);
    case kVolumeDiskImage:
      return MountResultMessage(row.dmgPath.empty() ? kMountImageFailed
                                                    : mounter.MountImage(row.dmgPath, row.password, row.mountPoint).code);
    default:
      return MountResultMessage(kMountNotEnoughInformation);
  }
}

std::string TryOneUnmount(const VolumeRow& row, VolumeMounter& mounter) {
  const std::string text = VolumeRowText(row);
  MountResult result;
  if (row.volumeType == kVolumeRemote) {
    if (!mounter.MountedRemotePath(row.Remote())) return Fill(GLS("The volume %@ is already unmounted."), "%@", text);
    result = mounter.UnmountRemote(row.Remote());
  } else {
    if (row.mountPoint.empty() || !mounter.IsMountedVolumePath(row.mountPoint))
      return Fill(GLS("The volume %@ is already unmounted."), "%@", text);
    result = mounter.UnmountDisk(row.mountPoint);
  }
  if (result.code == 0) return {};
  return Fill(GLS("Cannot unmount the volume:\r%@"), "%@", text) + (result.detail.empty() ? "" : "\r" + result.detail);
}

VolumeMountInfo GetVolumeMountInfoDictionary(const MountedVolume& volume) {
  VolumeMountInfo info;
  info.mountPoint = volume.mountPoint;
  if (!volume.diskID.empty()) {
    info.diskID = volume.diskID;
    info.volumeType = kVolumeLocalDisk;
    return info;
  }
  info.scheme = volume.scheme;
  info.user = volume.user;
  info.host = volume.host;
  info.path = volume.path;
  info.volumeType = kVolumeRemote;
  return info;
}

bool IsOnUmountedVolume(const std::vector<VolumeRow>& rows, const std::string& path,
                        const std::function<bool(const VolumeRow&)>& isMounted) {
  for (const VolumeRow& row : rows) {
    if (IsAtOrUnder(path, row.mountPoint) && !isMounted(row)) return true;
  }
  return false;
}

}  // namespace marigold
