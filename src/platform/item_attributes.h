// What the file system tells about one item, read in one call without following links, and the
// naming conventions that classify items (invisible, package).
#pragma once

#include <compare>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace marigold {

enum class ItemKind { kFile, kFolder, kSymlink, kFifo, kSocket, kCharDevice, kBlockDevice, kUnknown };

// A point in time as the file system keeps it: seconds since 1970-01-01 UTC and nanoseconds.
struct FileTime {
  std::int64_t seconds = 0;
  std::uint32_t nanoseconds = 0;  // 0 ... 999'999'999
  auto operator<=>(const FileTime&) const = default;
};

struct ItemAttributes {
  ItemKind kind = ItemKind::kUnknown;
  std::uint64_t size = 0;            // bytes; a link's size is the length of its target
  std::uint64_t allocatedBytes = 0;  // blocks on disk × 512; less than size for a sparse file
  std::uint32_t mode = 0;            // permission bits with set-id and sticky bits (07777)
  std::uint32_t uid = 0;
  std::uint32_t gid = 0;
  FileTime modificationTime;             // content modification (mtime)
  FileTime statusTime;                   // attribute modification (ctime); cannot be set
  FileTime accessTime;                   // atime
  std::optional<FileTime> creationTime;  // birth time, when the file system keeps one
  std::uint64_t device = 0;              // the volume's device number
  std::uint64_t inode = 0;
  std::uint64_t linkCount = 0;
  std::uint64_t specialDevice = 0;  // the device number a char/block device stands for
  bool isLocked = false;            // the immutable flag (chattr +i)
  bool isInvisible = false;         // the name begins with "."
  bool isPackage = false;           // a folder whose extension is a package extension

  bool IsFolder() const { return kind == ItemKind::kFolder; }
  // A folder that is not a package: the engine walks into it.
  bool IsReallyFolder() const { return kind == ItemKind::kFolder && !isPackage; }
};

// What a metadata copy carries besides the mode and owners, as far as attribute checking compares
// it. The backup date is the engine's own record of a run, not an attribute of the user's.
struct MetadataExtras {
  std::map<std::string, std::string> userAttributes;  // user.* names and values
  std::string accessList;         // the extended access list as text; empty when the mode says it all
  std::string defaultAccessList;  // a folder's default access list as text; empty when it has none
  bool operator==(const MetadataExtras&) const = default;
};

// The extensions that make a folder a package (one list, compared ignoring ASCII case).
inline constexpr std::string_view kPackageExtensions[] = {
    "app", "bundle", "framework", "plugin", "kext", "pkg", "mpkg", "rtfd", "xpc", "appex"};

// The last path component ("b" for "/a/b/", "/" for "/").
std::string_view LastPathComponent(std::string_view path);
// A name beginning with "." ("." and ".." included).
bool IsInvisibleName(std::string_view name);
// Whether a folder with this name is a package: its extension is one of kPackageExtensions.
bool IsPackageName(std::string_view name);

// What the engine remembers of an item at scan time, to see before it overwrites or deletes the
// item whether someone changed it since.
struct ItemSnapshot {
  bool exists = false;
  ItemKind kind = ItemKind::kUnknown;
  std::uint64_t size = 0;
  FileTime modificationTime;

  static ItemSnapshot Of(const ItemAttributes& attributes);
  static ItemSnapshot Absent() { return {}; }
  // Equal kind and, except for folders (whose size and date change as the run writes into
  // them), equal size and modification time to the nanosecond. Absent matches absent.
  bool Matches(const ItemSnapshot& now) const;
};

}  // namespace marigold
