// The metadata of a new file, set through its open descriptor: no path is looked up again, and
// the file can still be unnamed. One listing of the source's attribute names tells both which
// user attributes travel and whether it has an access list, so a plain file costs no access-list
// calls of its own.
#include <acl/libacl.h>
#include <sys/acl.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <memory>
#include <string_view>
#include <vector>

#include "platform/linux_file_system.h"
#include "platform/linux_metadata.h"

namespace marigold::linux_detail {

namespace {

constexpr const char* kAccessListAttribute = "system.posix_acl_access";

bool IsUnsupported(int error) { return error == EOPNOTSUPP || error == ENOTSUP || error == ENOSYS; }

// Every attribute name of the open item, NUL-separated; empty when it has none or its volume
// keeps none.
std::vector<char> AttributeNames(int fd) {
  std::vector<char> buffer(512);
  for (;;) {
    ssize_t n = ::flistxattr(fd, buffer.data(), buffer.size());
    if (n >= 0) {
      buffer.resize(static_cast<std::size_t>(n));
      return buffer;
    }
    if (errno != ERANGE) return {};
    ssize_t needed = ::flistxattr(fd, nullptr, 0);
    if (needed < 0) return {};
    buffer.resize(static_cast<std::size_t>(needed) + 64);
  }
}

std::optional<std::string> ReadValue(int fd, const char* name) {
  std::string value(256, '\0');
  for (;;) {
    ssize_t n = ::fgetxattr(fd, name, value.data(), value.size());
    if (n >= 0) {
      value.resize(static_cast<std::size_t>(n));
      return value;
    }
    if (errno != ERANGE) return std::nullopt;
    ssize_t needed = ::fgetxattr(fd, name, nullptr, 0);
    if (needed < 0) return std::nullopt;
    value.resize(static_cast<std::size_t>(needed) + 64);
  }
}

using AclPtr = std::unique_ptr<void, int (*)(void*)>;
AclPtr OwnAcl(acl_t acl) { return AclPtr(acl, &::acl_free); }
bool IsExtended(void* acl) { return ::acl_equiv_mode(static_cast<acl_t>(acl), nullptr) != 0; }

FsStatus SetOwner(int destFd, const ItemAttributes& source, CopyHints* hints, const std::string& destPath) {
  static const bool isRoot = ::geteuid() == 0;
  if (!(hints && hints->noOwnerChange.load(std::memory_order_relaxed))) {
    if (::fchown(destFd, source.uid, source.gid) == 0) return FsStatus::Success();
    if (errno != EPERM && errno != EINVAL && !IsUnsupported(errno)) return ErrnoError("set owner", destPath);
    // Only root may give a file away; its refusals belong to one volume and are not remembered.
    if (hints && !isRoot && errno == EPERM) hints->noOwnerChange.store(true, std::memory_order_relaxed);
  }
  // Not permitted: keep at least the group if we may.
  ::fchown(destFd, static_cast<uid_t>(-1), source.gid);
  return FsStatus::Success();
}

FsStatus CopyAccessList(int sourceFd, int destFd, bool sourceHasList, std::uint32_t mode,
                        const std::string& destPath) {
  constexpr std::string_view kOperation = "copy access list";
  if (sourceHasList) {
    auto acl = OwnAcl(::acl_get_fd(sourceFd));
    if (acl && IsExtended(acl.get())) {
      if (::acl_set_fd(destFd, static_cast<acl_t>(acl.get())) != 0 && !IsUnsupported(errno))
        return ErrnoError(kOperation, destPath);
      return FsStatus::Success();
    }
  }
  // The mode says it all; the new file may still have inherited a list from its folder's default.
  if (::fgetxattr(destFd, kAccessListAttribute, nullptr, 0) <= 0) return FsStatus::Success();
  auto inherited = OwnAcl(::acl_get_fd(destFd));
  if (!inherited || !IsExtended(inherited.get())) return FsStatus::Success();
  auto fromMode = OwnAcl(::acl_from_mode(mode & 0777));
  if (!fromMode || ::acl_set_fd(destFd, static_cast<acl_t>(fromMode.get())) != 0)
    return ErrnoError(kOperation, destPath);
  return FsStatus::Success();
}

}  // namespace

FsStatus ApplyFileMetadata(int sourceFd, int destFd, const ItemAttributes& source,
                           std::optional<std::int64_t> backupDate, int& backupDateError,
                           CopyHints* hints, const std::string& destPath) {
  backupDateError = 0;
  // Ownership first: a change of owner clears set-id bits, which the mode then puts back.
  FsStatus owned = SetOwner(destFd, source, hints, destPath);
  if (!owned) return owned;
  if (::fchmod(destFd, source.mode & 07777) != 0 && !(errno == EPERM && VolumeIgnoresOwnership(AtPath(destFd, ""))))
    return ErrnoError("set mode", destPath);

  const std::vector<char> names = AttributeNames(sourceFd);
  bool hasAccessList = false;
  bool userAttributesKept = true;
  for (std::size_t i = 0; i < names.size();) {
    const char* name = names.data() + i;
    i += std::strlen(name) + 1;
    if (std::strcmp(name, kAccessListAttribute) == 0) hasAccessList = true;
    if (!userAttributesKept || std::strncmp(name, "user.", 5) != 0) continue;
    if (backupDate && std::strcmp(name, kBackupDateAttribute) == 0) continue;  // ours replaces it
    auto value = ReadValue(sourceFd, name);
    if (!value) continue;  // removed meanwhile
    if (::fsetxattr(destFd, name, value->data(), value->size(), 0) != 0) {
      if (!IsUnsupported(errno)) return ErrnoError("copy extended attributes", destPath);
      userAttributesKept = false;  // the volume keeps none
    }
  }
  FsStatus listed = CopyAccessList(sourceFd, destFd, hasAccessList, source.mode, destPath);
  if (!listed) return listed;

  if (backupDate) {
    const std::string text = std::to_string(*backupDate);
    if (::fsetxattr(destFd, kBackupDateAttribute, text.data(), text.size(), 0) != 0) backupDateError = errno;
  }
  const timespec times[2] = {
      {static_cast<time_t>(source.accessTime.seconds), static_cast<long>(source.accessTime.nanoseconds)},
      {static_cast<time_t>(source.modificationTime.seconds), static_cast<long>(source.modificationTime.nanoseconds)}};
  if (::futimens(destFd, times) != 0) return ErrnoError("set times", destPath);
  return FsStatus::Success();
}

}  // namespace marigold::linux_detail
