#include "platform/mount_table.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <mutex>

namespace marigold {

namespace {

// Undoes the kernel's octal escapes of blanks, tabs, line breaks and backslashes.
std::string Unescape(std::string_view field) {
  std::string out;
  out.reserve(field.size());
  for (std::size_t i = 0; i < field.size(); ++i) {
    if (field[i] == '\\' && i + 3 < field.size() &&
        field[i + 1] >= '0' && field[i + 1] <= '3' && field[i + 2] >= '0' && field[i + 2] <= '7' &&
        field[i + 3] >= '0' && field[i + 3] <= '7') {
      out += static_cast<char>((field[i + 1] - '0') * 64 + (field[i + 2] - '0') * 8 + (field[i + 3] - '0'));
      i += 3;
    } else {
      out += field[i];
    }
  }
  return out;
}

std::vector<std::string_view> SplitBlanks(std::string_view line) {
  std::vector<std::string_view> fields;
  std::size_t pos = 0;
  while (pos < line.size()) {
    std::size_t end = line.find(' ', pos);
    if (end == std::string_view::npos) end = line.size();
    if (end > pos) fields.push_back(line.substr(pos, end - pos));
    pos = end + 1;
  }
  return fields;
}

bool HasOption(std::string_view options, std::string_view wanted) {
  std::size_t pos = 0;
  while (pos <= options.size()) {
    std::size_t end = options.find(',', pos);
    if (end == std::string_view::npos) end = options.size();
    if (options.substr(pos, end - pos) == wanted) return true;
    pos = end + 1;
  }
  return false;
}

bool IsOneOf(std::string_view type, std::initializer_list<std::string_view> list) {
  for (std::string_view known : list)
    if (type == known) return true;
  return false;
}

}  // namespace

std::vector<MountEntry> ParseMountInfo(std::string_view text) {
  std::vector<MountEntry> mounts;
  std::size_t pos = 0;
  while (pos < text.size()) {
    std::size_t end = text.find('\n', pos);
    if (end == std::string_view::npos) end = text.size();
    std::vector<std::string_view> fields = SplitBlanks(text.substr(pos, end - pos));
    pos = end + 1;
    // id parent major:minor root mount-point options [optional...] - type source super-options
    std::size_t dash = 6;
    while (dash < fields.size() && fields[dash] != "-") ++dash;
    if (fields.size() < 7 || dash + 1 >= fields.size()) continue;
    MountEntry entry;
    entry.mountPoint = Unescape(fields[4]);
    entry.readOnly = HasOption(fields[5], "ro");
    entry.type = Unescape(fields[dash + 1]);
    if (dash + 2 < fields.size()) entry.source = Unescape(fields[dash + 2]);
    mounts.push_back(std::move(entry));
  }
  return mounts;
}

std::optional<MountEntry> FindMount(const std::vector<MountEntry>& mounts, std::string_view path) {
  const MountEntry* best = nullptr;
  for (const MountEntry& mount : mounts) {
    std::string_view point = mount.mountPoint;
    bool holds = point == "/" ? !path.empty() && path.front() == '/'
                              : path.substr(0, point.size()) == point &&
                                    (path.size() == point.size() || path[point.size()] == '/');
    if (holds && (best == nullptr || point.size() >= best->mountPoint.size())) best = &mount;
  }
  if (best == nullptr) return std::nullopt;
  return *best;
}

std::vector<MountEntry> ReadMountTable() {
  // One command asks about volumes many times; the table is read again only when the kernel says
  // that something was mounted or unmounted since (the file signals it to poll). An open table
  // keeps showing the namespace it was opened in: a process that moved to another one opens it
  // again.
  static std::mutex mutex;
  static int fd = -1;
  static ino_t openedIn = 0;
  static std::optional<std::vector<MountEntry>> table;
  std::lock_guard lock(mutex);
  struct stat ns {};
  const ino_t namespaceNow = ::stat("/proc/self/ns/mnt", &ns) == 0 ? ns.st_ino : 0;
  if (fd >= 0 && namespaceNow != openedIn) {
    ::close(fd);
    fd = -1;
    table.reset();
  }
  if (fd < 0) {
    fd = ::open("/proc/self/mountinfo", O_RDONLY | O_CLOEXEC);
    openedIn = namespaceNow;
  }
  if (fd < 0) return {};
  pollfd changes{fd, POLLPRI, 0};
  const bool changed = ::poll(&changes, 1, 0) != 0;  // an error counts as a change
  if (table && !changed) return *table;
  std::string text;
  char buffer[16384];
  ssize_t n = 0;
  if (::lseek(fd, 0, SEEK_SET) == 0) {
    while ((n = ::read(fd, buffer, sizeof buffer)) > 0) text.append(buffer, static_cast<std::size_t>(n));
  }
  if (n < 0 || text.empty()) {
    table.reset();
    return {};
  }
  table = ParseMountInfo(text);
  return *table;
}

bool TypeIgnoresOwnership(std::string_view type) {
  return IsOneOf(type, {"vfat", "exfat", "msdos", "ntfs", "ntfs3", "fuseblk"}) ||
         type.substr(0, 8) == "fuseblk.";
}

bool TypeIsCaseInsensitive(std::string_view type) {
  return IsOneOf(type, {"vfat", "msdos", "exfat", "cifs", "smb3", "smbfs", "fuseblk.exfat",
                        "fuse.exfat"});
}

bool TypeIsCaseSensitive(std::string_view type) {
  return IsOneOf(type, {"ext2", "ext3", "ext4", "xfs", "btrfs", "tmpfs", "ramfs", "f2fs", "zfs",
                        "reiserfs", "jfs", "nilfs2", "bcachefs"});
}

}  // namespace marigold
