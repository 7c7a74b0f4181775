// Metadata of items: times, mode, ownership, the locked flag, user extended attributes, access
// lists and the backup date. Only user.* attributes travel; system.*, trusted.* and security.*
// belong to the system (access lists go through libacl, which knows their format).
#include "platform/linux_metadata.h"

#include <acl/libacl.h>
#include <linux/fs.h>
#include <linux/magic.h>
#include <sys/acl.h>
#include <sys/ioctl.h>
#include <sys/statfs.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <cerrno>
#include <charconv>
#include <memory>
#include <vector>

#include "platform/linux_file_system.h"

namespace marigold {

namespace linux_detail {

namespace {

bool StatVolume(const AtPath& item, struct statfs& info) {
  if (item.Dir() != AT_FDCWD) return ::fstatfs(item.Dir(), &info) == 0;
  const std::string& path = item.NameString();
  std::size_t slash = path.rfind('/');
  std::string parent = slash == std::string::npos ? "." : (slash == 0 ? "/" : path.substr(0, slash));
  return ::statfs(parent.c_str(), &info) == 0;
}

bool IsUnsupported(int error) { return error == EOPNOTSUPP || error == ENOTSUP || error == ENOSYS; }

// The names in a NUL-separated attribute list that begin with "user.".
std::vector<std::string> UserAttributeNames(const std::string& path) {
  std::vector<char> buffer(1024);
  for (;;) {
    ssize_t n = ::llistxattr(path.c_str(), buffer.data(), buffer.size());
    if (n >= 0) {
      std::vector<std::string> names;
      for (ssize_t i = 0; i < n;) {
        std::string name(buffer.data() + i);
        i += static_cast<ssize_t>(name.size()) + 1;
        if (name.rfind("user.", 0) == 0) names.push_back(std::move(name));
      }
      return names;
    }
    if (errno != ERANGE) return {};
    ssize_t needed = ::llistxattr(path.c_str(), nullptr, 0);
    if (needed < 0) return {};
    buffer.resize(static_cast<std::size_t>(needed) + 64);
  }
}

std::optional<std::string> ReadAttribute(const std::string& path, const char* name) {
  std::string value(256, '\0');
  for (;;) {
    ssize_t n = ::lgetxattr(path.c_str(), name, value.data(), value.size());
    if (n >= 0) {
      value.resize(static_cast<std::size_t>(n));
      return value;
    }
    if (errno != ERANGE) return std::nullopt;
    ssize_t needed = ::lgetxattr(path.c_str(), name, nullptr, 0);
    if (needed < 0) return std::nullopt;
    value.resize(static_cast<std::size_t>(needed) + 64);
  }
}

FsStatus CopyUserAttributes(const AtPath& source, const AtPath& dest, const std::string& destPath) {
  std::string from = source.ProcPath(), to = dest.ProcPath();
  for (const std::string& name : UserAttributeNames(from)) {
    auto value = ReadAttribute(from, name.c_str());
    if (!value) continue;  // removed meanwhile
    if (::lsetxattr(to.c_str(), name.c_str(), value->data(), value->size(), 0) != 0) {
      if (IsUnsupported(errno)) return FsStatus::Success();  // the volume keeps none
      return ErrnoError("copy extended attributes", destPath);
    }
  }
  return FsStatus::Success();
}

using AclPtr = std::unique_ptr<void, int (*)(void*)>;
AclPtr OwnAcl(acl_t acl) { return AclPtr(acl, &::acl_free); }

bool IsExtended(acl_t acl) { return ::acl_equiv_mode(acl, nullptr) != 0; }

// The access list of `type` as text: empty when there is none, or when an access list only
// repeats the mode.
std::string AccessListText(const std::string& path, acl_type_t type) {
  auto acl = OwnAcl(::acl_get_file(path.c_str(), type));
  if (!acl) return {};
  acl_t list = static_cast<acl_t>(acl.get());
  if (type == ACL_TYPE_ACCESS ? !IsExtended(list) : ::acl_entries(list) <= 0) return {};
  std::unique_ptr<char, int (*)(void*)> text(::acl_to_any_text(list, nullptr, ',', 0), &::acl_free);
  return text ? std::string(text.get()) : std::string();
}

// A new item may have inherited access lists from its folder's default list, so the destination
// is always looked at.
FsStatus CopyAccessLists(const AtPath& source, const ItemAttributes& sourceAttributes,
                         const AtPath& dest, const std::string& destPath) {
  constexpr std::string_view kOperation = "copy access list";
  std::string from = source.ProcPath(), to = dest.ProcPath();
  auto sourceAcl = OwnAcl(::acl_get_file(from.c_str(), ACL_TYPE_ACCESS));
  if (!sourceAcl) return FsStatus::Success();  // the source's volume keeps none
  acl_t wanted = static_cast<acl_t>(sourceAcl.get());
  AclPtr fromMode(nullptr, &::acl_free);
  if (!IsExtended(wanted)) {
    auto destAcl = OwnAcl(::acl_get_file(to.c_str(), ACL_TYPE_ACCESS));
    if (!destAcl || !IsExtended(static_cast<acl_t>(destAcl.get()))) return FsStatus::Success();
    fromMode = OwnAcl(::acl_from_mode(sourceAttributes.mode & 0777));
    wanted = static_cast<acl_t>(fromMode.get());
  }
  if (::acl_set_file(to.c_str(), ACL_TYPE_ACCESS, wanted) != 0) {
    if (IsUnsupported(errno)) return FsStatus::Success();
    return ErrnoError(kOperation, destPath);
  }
  if (sourceAttributes.kind != ItemKind::kFolder) return FsStatus::Success();
  auto sourceDefault = OwnAcl(::acl_get_file(from.c_str(), ACL_TYPE_DEFAULT));
  if (sourceDefault && ::acl_entries(static_cast<acl_t>(sourceDefault.get())) > 0) {
    if (::acl_set_file(to.c_str(), ACL_TYPE_DEFAULT, static_cast<acl_t>(sourceDefault.get())) != 0 &&
        !IsUnsupported(errno))
      return ErrnoError(kOperation, destPath);
  } else if (::acl_delete_def_file(to.c_str()) != 0 && !IsUnsupported(errno) &&
             errno != ENOTDIR) {
    return ErrnoError(kOperation, destPath);
  }
  return FsStatus::Success();
}

timespec ToTimespec(FileTime t) {
  return timespec{static_cast<time_t>(t.seconds), static_cast<long>(t.nanoseconds)};
}

}  // namespace

bool LinkTimesAreSafe(const AtPath& item) {
  struct statfs info {};
  if (!StatVolume(item, info)) return false;
  switch (static_cast<unsigned long>(info.f_type)) {
    case EXT4_SUPER_MAGIC: case XFS_SUPER_MAGIC: case BTRFS_SUPER_MAGIC: case TMPFS_MAGIC:
    case RAMFS_MAGIC: case F2FS_SUPER_MAGIC: case NILFS_SUPER_MAGIC: case OVERLAYFS_SUPER_MAGIC:
    case REISERFS_SUPER_MAGIC:
    case 0x3153464aUL:  // jfs
    case 0x2fc12fc1UL:  // zfs
    case 0xca451a4eUL:  // bcachefs
      return true;
    default:
      return false;
  }
}

bool VolumeIgnoresOwnership(const AtPath& item) {
  struct statfs info {};
  if (!StatVolume(item, info)) return false;
  switch (static_cast<unsigned long>(info.f_type)) {
    case MSDOS_SUPER_MAGIC: case EXFAT_SUPER_MAGIC: case FUSE_SUPER_MAGIC:
    case 0x5346544eUL:  // ntfs, ntfs3
      return true;
    default:
      return false;
  }
}

FsStatus ApplyMetadata(const AtPath& source, const ItemAttributes& sourceAttributes,
                       const AtPath& dest, const ItemAttributes& destAttributes,
                       const std::string& destPathForErrors) {
  const bool isLink = destAttributes.kind == ItemKind::kSymlink;
  // Ownership first: a change of owner clears set-id bits, which the mode then puts back.
  if (sourceAttributes.uid != destAttributes.uid || sourceAttributes.gid != destAttributes.gid) {
    if (::fchownat(dest.Dir(), dest.Name(), sourceAttributes.uid, sourceAttributes.gid,
                   AT_SYMLINK_NOFOLLOW) != 0) {
      // Not permitted (not root, or a volume without owners): keep at least the group if we may.
      if (errno != EPERM && errno != EINVAL && !IsUnsupported(errno))
        return ErrnoError("set owner", destPathForErrors);
      ::fchownat(dest.Dir(), dest.Name(), static_cast<uid_t>(-1), sourceAttributes.gid,
                 AT_SYMLINK_NOFOLLOW);
    }
  }
  if (!isLink && ::fchmodat(dest.Dir(), dest.Name(), sourceAttributes.mode & 07777, 0) != 0 &&
      !(errno == EPERM && VolumeIgnoresOwnership(dest))) {
    return ErrnoError("set mode", destPathForErrors);
  }
  if (!isLink && sourceAttributes.kind != ItemKind::kSymlink) {
    FsStatus attributes = CopyUserAttributes(source, dest, destPathForErrors);
    if (!attributes) return attributes;
    FsStatus lists = CopyAccessLists(source, sourceAttributes, dest, destPathForErrors);
    if (!lists) return lists;
  }
  if (isLink && !LinkTimesAreSafe(dest)) return FsStatus::Success();
  timespec times[2] = {ToTimespec(sourceAttributes.accessTime),
                       ToTimespec(sourceAttributes.modificationTime)};
  if (::utimensat(dest.Dir(), dest.Name(), times, AT_SYMLINK_NOFOLLOW) != 0)
    return ErrnoError("set times", destPathForErrors);
  return FsStatus::Success();
}

}  // namespace linux_detail

using linux_detail::AtPath;
using linux_detail::ErrnoError;
using linux_detail::StatAt;

FsStatus LinuxFileSystem::SetTimes(const std::string& path, FileTime modification,
                                   std::optional<FileTime> access) {
  constexpr std::string_view kOperation = "set times";
  auto at = AtPath::Resolve(path, kOperation);
  if (!at) return at.Error();
  const AtPath& item = at.Value();
  auto attributes = StatAt(item.Dir(), item.Name(), LastPathComponent(path), path);
  if (!attributes) return attributes.Error();
  if (attributes.Value().kind == ItemKind::kSymlink && !linux_detail::LinkTimesAreSafe(item))
    return FsStatus::Success();
  timespec times[2] = {access ? linux_detail::ToTimespec(*access) : timespec{0, UTIME_OMIT},
                       linux_detail::ToTimespec(modification)};
  if (::utimensat(item.Dir(), item.Name(), times, AT_SYMLINK_NOFOLLOW) != 0)
    return ErrnoError(kOperation, path);
  return FsStatus::Success();
}

FsStatus LinuxFileSystem::SetMode(const std::string& path, std::uint32_t mode) {
  constexpr std::string_view kOperation = "set mode";
  auto at = AtPath::Resolve(path, kOperation);
  if (!at) return at.Error();
  const AtPath& item = at.Value();
  if (::fchmodat(item.Dir(), item.Name(), mode & 07777, AT_SYMLINK_NOFOLLOW) == 0)
    return FsStatus::Success();
  int error = errno;
  if (error == EOPNOTSUPP) {
    auto attributes = StatAt(item.Dir(), item.Name(), LastPathComponent(path), path);
    if (attributes && attributes.Value().kind == ItemKind::kSymlink) return FsStatus::Success();
  }
  return MakeFsError(error, std::string(kOperation), path);
}

FsStatus LinuxFileSystem::SetOwner(const std::string& path, std::int64_t uid, std::int64_t gid) {
  constexpr std::string_view kOperation = "set owner";
  auto at = AtPath::Resolve(path, kOperation);
  if (!at) return at.Error();
  if (::fchownat(at.Value().Dir(), at.Value().Name(), static_cast<uid_t>(uid),
                 static_cast<gid_t>(gid), AT_SYMLINK_NOFOLLOW) != 0)
    return ErrnoError(kOperation, path);
  return FsStatus::Success();
}

FsStatus LinuxFileSystem::SetLocked(const std::string& path, bool locked) {
  constexpr std::string_view kOperation = "set locked flag";
  auto at = AtPath::Resolve(path, kOperation);
  if (!at) return at.Error();
  const AtPath& item = at.Value();
  auto attributes = StatAt(item.Dir(), item.Name(), LastPathComponent(path), path);
  if (!attributes) return attributes.Error();
  ItemKind kind = attributes.Value().kind;
  if (kind != ItemKind::kFile && kind != ItemKind::kFolder) {
    if (!locked) return FsStatus::Success();
    return MakeFsError(EOPNOTSUPP, std::string(kOperation), path);
  }
  linux_detail::UniqueFd fd(::openat(item.Dir(), item.Name(),
                                     O_RDONLY | O_NONBLOCK | O_NOFOLLOW | O_CLOEXEC | O_NOCTTY));
  if (!fd.Valid()) return ErrnoError(kOperation, path);
  int flags = 0;
  if (::ioctl(fd.Get(), FS_IOC_GETFLAGS, &flags) != 0) {
    if (errno == ENOTTY) errno = EOPNOTSUPP;
    if (!locked && errno == EOPNOTSUPP) return FsStatus::Success();  // no flags, so not locked
    return ErrnoError(kOperation, path);
  }
  int wanted = locked ? (flags | FS_IMMUTABLE_FL) : (flags & ~FS_IMMUTABLE_FL);
  if (wanted != flags && ::ioctl(fd.Get(), FS_IOC_SETFLAGS, &wanted) != 0) {
    if (errno == ENOTTY) errno = EOPNOTSUPP;
    return ErrnoError(kOperation, path);
  }
  return FsStatus::Success();
}

std::optional<std::int64_t> LinuxFileSystem::GetBackupDate(const std::string& path) {
  auto at = AtPath::Resolve(path, "get backup date");
  if (!at) return std::nullopt;
  auto text = linux_detail::ReadAttribute(at.Value().ProcPath(), kBackupDateAttribute);
  if (!text) return std::nullopt;
  while (!text->empty() && (text->back() == '\n' || text->back() == ' ' || text->back() == '\0'))
    text->pop_back();
  std::int64_t seconds = 0;
  const char* end = text->data() + text->size();
  auto [stop, error] = std::from_chars(text->data(), end, seconds);
  if (error != std::errc() || stop != end || text->empty()) return std::nullopt;
  return seconds;
}

FsStatus LinuxFileSystem::SetBackupDate(const std::string& path, std::int64_t unixSeconds) {
  constexpr std::string_view kOperation = "set backup date";
  auto at = AtPath::Resolve(path, kOperation);
  if (!at) return at.Error();
  std::string text = std::to_string(unixSeconds);
  if (::lsetxattr(at.Value().ProcPath().c_str(), kBackupDateAttribute, text.data(), text.size(), 0) != 0)
    return ErrnoError(kOperation, path);
  return FsStatus::Success();
}

FsResult<MetadataExtras> LinuxFileSystem::GetMetadataExtras(const std::string& path) {
  constexpr std::string_view kOperation = "read metadata";
  auto at = AtPath::Resolve(path, kOperation);
  if (!at) return at.Error();
  auto attributes = StatAt(at.Value().Dir(), at.Value().Name(), LastPathComponent(path), path);
  if (!attributes) return attributes.Error();
  const std::string proc = at.Value().ProcPath();
  MetadataExtras extras;
  for (const std::string& name : linux_detail::UserAttributeNames(proc)) {
    if (name == kBackupDateAttribute) continue;
    if (auto value = linux_detail::ReadAttribute(proc, name.c_str())) extras.userAttributes[name] = std::move(*value);
  }
  // Access lists are read through the path, which would follow a link: a link has none.
  if (attributes.Value().kind == ItemKind::kSymlink) return extras;
  extras.accessList = linux_detail::AccessListText(proc, ACL_TYPE_ACCESS);
  if (attributes.Value().kind == ItemKind::kFolder)
    extras.defaultAccessList = linux_detail::AccessListText(proc, ACL_TYPE_DEFAULT);
  return extras;
}

FsStatus LinuxFileSystem::CopyMetadata(const std::string& source, const std::string& dest) {
  constexpr std::string_view kOperation = "copy metadata";
  auto from = AtPath::Resolve(source, kOperation);
  if (!from) return from.Error();
  auto to = AtPath::Resolve(dest, kOperation);
  if (!to) return to.Error();
  auto sourceAttributes = StatAt(from.Value().Dir(), from.Value().Name(), LastPathComponent(source), source);
  if (!sourceAttributes) return sourceAttributes.Error();
  auto destAttributes = StatAt(to.Value().Dir(), to.Value().Name(), LastPathComponent(dest), dest);
  if (!destAttributes) return destAttributes.Error();
  return linux_detail::ApplyMetadata(from.Value(), sourceAttributes.Value(), to.Value(),
                                     destAttributes.Value(), dest);
}

}  // namespace marigold
