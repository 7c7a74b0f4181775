#include "support/platform_test_support.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <sstream>

#include "platform/linux_file_system.h"
#include "platform/tree_walk.h"
#include "util/temporary_names.h"

namespace marigold::test {

bool IsRoot() { return ::geteuid() == 0; }

std::unique_ptr<TestVolume> TestVolume::Make(const std::string& type, int sizeMiB, std::string* whyNot,
                                             const std::string& options) {
  if (!IsRoot()) {
    *whyNot = "mounting needs root";
    return nullptr;
  }
  std::unique_ptr<TestVolume> volume(new TestVolume);
  std::string mountPoint = "/tmp/mg-volume-XXXXXX";
  if (::mkdtemp(mountPoint.data()) == nullptr) {
    *whyNot = "no mount point";
    return nullptr;
  }
  volume->mMountPoint = mountPoint;
  std::string command;
  if (type == "tmpfs") {
    command = "mount -t tmpfs -o size=" + std::to_string(sizeMiB) + "m tmpfs " + mountPoint;
  } else {
    volume->mImage = mountPoint + ".img";
    std::string mkfs = type == "xfs"     ? "mkfs.xfs -q -m reflink=1"
                       : type == "btrfs" ? "mkfs.btrfs -q"
                       : type == "exfat" ? "mkfs.exfat"
                                         : "mkfs.ext4 -q -F";
    std::string device;
    if (RunCommand("truncate -s " + std::to_string(sizeMiB) + "M " + volume->mImage + " && " + mkfs +
                       " " + volume->mImage + " >/dev/null 2>&1") != 0 ||
        RunCommand("losetup -f --show " + volume->mImage + " 2>/dev/null", &device) != 0) {
      *whyNot = "cannot make a " + type + " image (is " + mkfs.substr(0, mkfs.find(' ')) + " installed?)";
      return nullptr;
    }
    while (!device.empty() && device.back() == '\n') device.pop_back();
    volume->mLoopDevice = device;
    command = (type == "exfat" ? "mount.exfat-fuse " : "mount ") + device + " " + mountPoint;
  }
  if (!options.empty()) command += " -o " + options;
  if (RunCommand(command + " 2>/dev/null") != 0) {
    *whyNot = "cannot mount " + type;
    return nullptr;
  }
  return volume;
}

TestVolume::~TestVolume() {
  if (!mMountPoint.empty()) {
    RunCommand("umount " + mMountPoint + " 2>/dev/null || umount -l " + mMountPoint + " 2>/dev/null");
    ::rmdir(mMountPoint.c_str());
  }
  if (!mLoopDevice.empty()) RunCommand("losetup -d " + mLoopDevice + " 2>/dev/null");
  if (!mImage.empty()) ::unlink(mImage.c_str());
}

void WriteFile(const std::string& path, const std::string& content, mode_t mode) {
  {
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out << content;
  }
  ::chmod(path.c_str(), mode);
}

int RunCommand(const std::string& command, std::string* output) {
  FILE* pipe = ::popen(command.c_str(), "r");
  if (pipe == nullptr) return -1;
  std::array<char, 4096> buffer;
  std::string text;
  while (std::size_t n = std::fread(buffer.data(), 1, buffer.size(), pipe)) text.append(buffer.data(), n);
  int status = ::pclose(pipe);
  if (output != nullptr) *output = text;
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

int CountTemporaryItems(const std::string& folder) {
  int count = 0;
  DIR* dir = ::opendir(folder.c_str());
  if (dir == nullptr) return -1;
  while (struct dirent* d = ::readdir(dir))
    if (IsTemporaryName(d->d_name)) ++count;
  ::closedir(dir);
  return count;
}

}  // namespace marigold::test
