// Disks and images: udisks2 (through udisksctl, which asks the system bus) when its service
// answers, else mount, losetup and cryptsetup as root. Passwords reach cryptsetup on standard
// input only.
#include <gio/gio.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <functional>
#include <cctype>

#include "platform/gio_remote_volumes.h"
#include "platform/mount_table.h"
#include "platform/process_runner.h"
#include "platform/volume_mounter.h"

namespace marigold {
namespace {

constexpr const char* kMapperPrefix = "/dev/mapper/marigold-";

ProcessOutcome Run(std::vector<std::string> argv, std::string input = {}) {
  ProcessRequest request;
  request.argv = std::move(argv);
  request.input = std::move(input);
  request.environment = {{"LC_ALL", "C"}};
  return RunProcess(request);
}

std::string FirstLine(const ProcessOutcome& outcome) {
  std::string text = outcome.errors.empty() ? outcome.output : outcome.errors;
  if (!outcome.started) text = outcome.startError;
  return text.substr(0, text.find('\n'));
}

MountResult Failed(int code, const ProcessOutcome& outcome) { return MountResult{code, {}, FirstLine(outcome)}; }

bool UdisksAnswers() {
  static const bool answers = [] {
    if (::access("/usr/bin/udisksctl", X_OK) != 0) return false;
    return Run({"udisksctl", "status"}).exitStatus == 0;
  }();
  return answers;
}

// "Mounted /dev/loop0 at /media/user/DISK" (udisksctl's answer) gives the mount point.
std::string UdisksMountPoint(const std::string& output) {
  const std::size_t at = output.find(" at ");
  if (at == std::string::npos) return {};
  std::string point = output.substr(at + 4);
  while (!point.empty() && (point.back() == '\n' || point.back() == '.')) point.pop_back();
  return point;
}

std::string ChosenMountPoint(const std::string& wanted, const std::string& name) {
  if (!wanted.empty()) return wanted;
  std::string base = std::filesystem::path(name).filename().string();
  if (base.empty() || base == "." || base == "..") base = "volume";
  return "/run/marigold/" + base;
}

bool IsMountPoint(const std::string& path) {
  for (const MountEntry& entry : ReadMountTable()) {
    if (entry.mountPoint == path) return true;
  }
  return false;
}

std::optional<MountEntry> EntryAt(const std::string& path) {
  std::optional<MountEntry> found;
  for (const MountEntry& entry : ReadMountTable()) {
    if (entry.mountPoint == path) found = entry;
  }
  return found;
}

// Mounts `device` as root at the chosen folder, made when missing.
MountResult MountAsRoot(const std::string& device, const std::string& mountPoint, std::vector<std::string> options) {
  std::error_code ignored;
  std::filesystem::create_directories(mountPoint, ignored);
  std::vector<std::string> argv{"mount"};
  for (std::string& option : options) argv.push_back(std::move(option));
  argv.push_back(device);
  argv.push_back(mountPoint);
  const ProcessOutcome outcome = Run(argv);
  if (outcome.exitStatus != 0) return Failed(kMountImageFailed, outcome);
  return MountResult{0, mountPoint, {}};
}

MountResult CannotMountHere() {
  return MountResult{kMountParameterError, {}, "mounting a disk needs the udisks2 service or root, and neither is here"};
}

std::string MapperName(const std::string& imagePath) {
  return std::to_string(std::hash<std::string>{}(imagePath) & 0xffffffffu);
}

class LinuxVolumeMounter : public VolumeMounter {
 public:
  std::optional<std::string> MountedRemotePath(const RemoteVolume& volume) override {
    return GioMountedRemotePath(volume);
  }
  MountResult MountRemote(const RemoteVolume& volume) override { return GioMountRemote(volume); }
  MountResult UnmountRemote(const RemoteVolume& volume) override { return GioUnmountRemote(volume); }

  MountResult MountDisk(const std::string& diskID, const std::string& mountPoint) override {
    if (!mountPoint.empty() && IsMountPoint(mountPoint)) return MountResult{kMountAlreadyMounted, mountPoint, {}};
    if (::geteuid() == 0) return MountAsRoot(diskID, ChosenMountPoint(mountPoint, diskID), {});
    if (!UdisksAnswers()) return CannotMountHere();
    std::string device = diskID;
    if (diskID.starts_with("UUID=")) device = "/dev/disk/by-uuid/" + diskID.substr(5);
    if (diskID.starts_with("LABEL=")) device = "/dev/disk/by-label/" + diskID.substr(6);
    const ProcessOutcome outcome = Run({"udisksctl", "mount", "--no-user-interaction", "-b", device});
    if (outcome.exitStatus != 0) return Failed(kMountParameterError, outcome);
    return MountResult{0, UdisksMountPoint(outcome.output), {}};
  }

  MountResult MountImage(const std::string& imagePath, const std::string& password,
                         const std::string& mountPoint) override {
    if (!mountPoint.empty() && IsMountPoint(mountPoint)) return MountResult{kMountAlreadyMounted, mountPoint, {}};
    if (::geteuid() != 0) return MountImageWithUdisks(imagePath, password);
    const std::string target = ChosenMountPoint(mountPoint, std::filesystem::path(imagePath).stem().string());
    if (password.empty()) return MountAsRoot(imagePath, target, {"-o", "loop"});
    // cryptsetup attaches the image to a loop device that goes away when the mapping closes.
    const std::string name = "marigold-" + MapperName(imagePath);
    const ProcessOutcome opened = Run({"cryptsetup", "open", "--type", "luks", "--key-file=-", imagePath, name}, password);
    if (opened.exitStatus != 0) {
      // cryptsetup's exit status 2 is a wrong passphrase.
      return Failed(opened.exitStatus == 2 ? kMountNotAuthorized : kMountImageFailed, opened);
    }
    MountResult result = MountAsRoot("/dev/mapper/" + name, target, {});
    if (result.code != 0) Run({"cryptsetup", "close", name});
    return result;
  }

  MountResult UnmountDisk(const std::string& mountPoint) override {
    const std::optional<MountEntry> entry = EntryAt(mountPoint);
    if (!entry) return MountResult{kMountParameterError, {}, "not mounted"};
    if (::geteuid() != 0) {
      if (!UdisksAnswers()) return CannotMountHere();
      const ProcessOutcome outcome = Run({"udisksctl", "unmount", "--no-user-interaction", "-b", entry->source});
      if (outcome.exitStatus != 0) return Failed(kMountBusy, outcome);
      if (entry->source.starts_with("/dev/loop")) Run({"udisksctl", "loop-delete", "--no-user-interaction", "-b", entry->source});
      return {};
    }
    const ProcessOutcome outcome = Run({"umount", mountPoint});
    if (outcome.exitStatus != 0) return Failed(outcome.errors.find("busy") != std::string::npos ? kMountBusy : kMountParameterError, outcome);
    if (entry->source.starts_with(kMapperPrefix)) {
      Run({"cryptsetup", "close", entry->source.substr(std::string("/dev/mapper/").size())});
    } else if (entry->source.starts_with("/dev/loop")) {
      // Mounting with "-o loop" detaches by itself; one attached by hand is detached here.
      const std::string backing = "/sys/block/" + entry->source.substr(5) + "/loop/backing_file";
      if (::access(backing.c_str(), F_OK) == 0) Run({"losetup", "-d", entry->source});
    }
    return {};
  }

  bool IsMountedVolumePath(const std::string& mountPoint) override {
    const std::vector<MountEntry> mounts = ReadMountTable();
    const std::optional<MountEntry> holder = FindMount(mounts, mountPoint);
    if (!holder) return false;
    if (holder->mountPoint == mountPoint) return true;
    // A server volume's folder inside the GVfs folder exists only while the volume is mounted.
    struct stat info {};
    return holder->type == "fuse.gvfsd-fuse" && ::stat(mountPoint.c_str(), &info) == 0;
  }

  std::vector<MountedVolume> MountedVolumes() override {
    std::vector<MountedVolume> volumes = GioMountedRemoteVolumes();
    for (const MountEntry& entry : ReadMountTable()) {
      if (!entry.source.starts_with("/dev/")) continue;
      MountedVolume disk;
      disk.diskID = entry.source;
      disk.mountPoint = entry.mountPoint;
      volumes.push_back(std::move(disk));
    }
    return volumes;
  }

 private:
  MountResult MountImageWithUdisks(const std::string& imagePath, const std::string& password) {
    if (!UdisksAnswers()) return CannotMountHere();
    if (!password.empty())
      return MountResult{kMountImageFailed, {}, "a protected image is opened as root only"};
    const ProcessOutcome loop = Run({"udisksctl", "loop-setup", "--no-user-interaction", "-f", imagePath});
    // "Mapped file IMAGE as /dev/loop3."
    const std::size_t at = loop.output.find("/dev/loop");
    if (loop.exitStatus != 0 || at == std::string::npos) return Failed(kMountImageFailed, loop);
    std::size_t end = at + 9;
    while (end < loop.output.size() && std::isdigit(static_cast<unsigned char>(loop.output[end])) != 0) ++end;
    const std::string device = loop.output.substr(at, end - at);
    const ProcessOutcome mounted = Run({"udisksctl", "mount", "--no-user-interaction", "-b", device});
    if (mounted.exitStatus != 0) {
      Run({"udisksctl", "loop-delete", "--no-user-interaction", "-b", device});
      return Failed(kMountImageFailed, mounted);
    }
    return MountResult{0, UdisksMountPoint(mounted.output), {}};
  }
};

}  // namespace

std::string RemoteLocationText(const RemoteVolume& volume) {
  std::string text = volume.scheme + "://";
  if (!volume.user.empty()) {
    char* user = g_uri_escape_string(volume.user.c_str(), nullptr, FALSE);
    text += std::string(user) + "@";
    g_free(user);
  }
  text += volume.host;
  if (!volume.path.empty()) {
    char* path = g_uri_escape_string(volume.path.c_str(), "/", FALSE);
    if (volume.path.front() != '/') text += "/";
    text += path;
    g_free(path);
  }
  return text;
}

VolumeMounter& SystemVolumeMounter() {
  static LinuxVolumeMounter mounter;
  return mounter;
}

}  // namespace marigold
