// The one seam between the engine and the disk. The engine never calls the system itself: it
// calls a FileSystem, which is LinuxFileSystem in the programs and, in tests, a FaultFileSystem
// that forwards to the real one except for the calls a test wants to fail.
//
// Every path is a full path of bytes (no encoding assumed). Unless a contract says otherwise a
// call never follows a symbolic link in the last component and works for paths longer than
// PATH_MAX. Calls may come from any thread; two threads working on one item see what the
// system gives them.
#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/fs_result.h"
#include "platform/item_attributes.h"
#include "platform/whole_file.h"

namespace marigold {

struct FolderEntry {
  std::string name;  // raw bytes, as the folder holds it
  ItemAttributes attributes;
};

// How the data of a copied file travelled; a folder copy reports the slowest way any of its
// files took, a link or an empty folder kNone.
enum class CopyMethod { kNone, kClone, kCopyRange, kReadWrite };

// Progress of one copy, called on the copying thread: bytes of data written so far, and the
// file's size (0 for a folder copy, whose total is not counted in advance; holes are not written,
// so a sparse file ends below its size). Return false to stop the copy (it then fails with
// FsProblem::kStopped and leaves nothing behind).
using CopyProgress = std::function<bool(std::uint64_t copied, std::uint64_t total)>;

// What the copies of one task learn about their volumes, shared so that a refusal is met once
// per task instead of once per file. A hint only ever skips an attempt that would be refused, so
// a wrong one costs speed, never content.
struct CopyHints {
  std::atomic<bool> noClone{false};         // FICLONE refused: go straight to copy_file_range
  std::atomic<bool> noUnnamedFiles{false};  // O_TMPFILE refused: new files use a temporary name
  std::atomic<bool> noOwnerChange{false};   // not permitted to give files another owner
};

struct CopyOptions {
  // When the destination exists: true replaces it atomically (at every instant the destination
  // path holds the old or the new complete item); false fails with EEXIST (before copying when
  // the destination is already there, at the end when it appeared meanwhile).
  bool replaceExisting = false;
  CopyProgress progress;                         // called between chunks; may be empty
  const std::atomic<bool>* keepRunning = nullptr;  // the run's flag; false stops the copy
  // The source as the caller has just described it, which spares describing it again. The copy
  // still checks that the file it opens is that item and that it does not change while read.
  const ItemAttributes* sourceAttributes = nullptr;
  // A backup date to store with the copy (not with a link) before it appears under its name;
  // a refusal does not fail the copy (see CopyReport::backupDateError).
  std::optional<std::int64_t> backupDate;
  CopyHints* hints = nullptr;  // may be empty
};

struct CopyReport {
  CopyMethod method = CopyMethod::kNone;
  std::uint64_t bytesCopied = 0;
  int backupDateError = 0;  // errno of storing CopyOptions::backupDate; 0 when stored or not asked
};

struct VolumeInfo {
  std::string mountPoint;  // "/", "/media/stick", ...
  std::string type;        // "ext4", "vfat", "fuse.sshfs", ...
  std::string source;      // "/dev/sdb1", "server:/share", ...
  std::string name;        // last component of the mount point; for "/" the label or host name
  bool readOnly = false;
  bool ignoresOwnership = false;  // vfat, exfat, msdos, ntfs, ntfs3, fuseblk
};

// Access checks with the effective ids, as the engine's privilege checks need them.
enum AccessMode : int { kAccessExists = 0, kAccessRead = 4, kAccessWrite = 2, kAccessSearch = 1 };

class FileSystem {
 public:
  virtual ~FileSystem() = default;

  // Whether several threads may call this file system at once. The real one keeps no state of
  // its own; wrappers that do (fault injection) keep the default.
  virtual bool AllowsConcurrentCalls() const { return false; }

  // --- reading -------------------------------------------------------------------------------

  // Attributes of the item itself (a link is described, not its target). ENOENT when missing.
  virtual FsResult<ItemAttributes> GetAttributes(const std::string& path) = 0;
  // The folder's items except "." and "..", each with its attributes, sorted by
  // CompareItemNames. Follows a link given as `path`. Items that vanish while listed are left out.
  virtual FsResult<std::vector<FolderEntry>> ListFolder(const std::string& path) = 0;
  // The target text of a symbolic link, unresolved.
  virtual FsResult<std::string> ReadLink(const std::string& path) = 0;
  // The absolute path with every link and "."/".." resolved; the item must exist, and the
  // result must fit in PATH_MAX (ENAMETOOLONG otherwise).
  virtual FsResult<std::string> ResolvePath(const std::string& path) = 0;
  // Success when the process may access the item in `mode` (kAccess... bits) with its effective
  // ids; EACCES, EROFS, ENOENT, ... otherwise. Does not follow a final link.
  virtual FsStatus CheckAccess(const std::string& path, int mode) = 0;
  // The backup date (seconds since 1970 UTC) kept with the item; nothing when the item has none
  // or its file system keeps none (links never have one).
  virtual std::optional<std::int64_t> GetBackupDate(const std::string& path) = 0;

  // The user extended attributes (the backup date aside) and access lists of the item; a volume
  // that keeps none gives empty ones. Does not follow a link.
  virtual FsResult<MetadataExtras> GetMetadataExtras(const std::string& path) = 0;

  // --- changing items ------------------------------------------------------------------------

  // Creates a folder with `mode` less the umask. Without intermediates the parent must exist and
  // an existing item gives EEXIST; with them, missing parents are created and an existing folder
  // is success.
  virtual FsStatus CreateFolder(const std::string& path, std::uint32_t mode,
                                bool withIntermediates) = 0;
  // Removes a file, link, special item or empty folder; a non-empty folder gives ENOTEMPTY.
  virtual FsStatus RemoveItem(const std::string& path) = 0;
  // Removes an item and, for a folder, everything inside it (depth first). Does not clear locked
  // flags: a locked item inside gives EPERM and what was removed stays removed.
  virtual FsStatus RemoveTree(const std::string& path) = 0;
  // Renames within one volume. An existing destination is replaced atomically when `replace`
  // (a file over a file, a folder over an empty folder), else the call fails with EEXIST.
  virtual FsStatus Rename(const std::string& from, const std::string& to, bool replace) = 0;
  // Sets the modification time and, when given, the access time. On a link the link's own times
  // are set on local volumes; on network and FUSE volumes (where that would change the target)
  // nothing is done and the call succeeds.
  virtual FsStatus SetTimes(const std::string& path, FileTime modification,
                            std::optional<FileTime> access) = 0;
  // Sets permission bits (07777). A link has none: success without change.
  virtual FsStatus SetMode(const std::string& path, std::uint32_t mode) = 0;
  // Sets owner and group; -1 leaves one as it is. Acts on a link itself.
  virtual FsStatus SetOwner(const std::string& path, std::int64_t uid, std::int64_t gid) = 0;
  // Sets or clears the immutable flag (root only, EPERM otherwise). Clearing on a link or special
  // item succeeds without change; setting there gives EOPNOTSUPP.
  virtual FsStatus SetLocked(const std::string& path, bool locked) = 0;
  // Stores the backup date (seconds since 1970 UTC) with the item; EPERM or EOPNOTSUPP where
  // the item or its file system cannot keep one.
  virtual FsStatus SetBackupDate(const std::string& path, std::int64_t unixSeconds) = 0;

  // --- copying -------------------------------------------------------------------------------

  // Copies a file, link, special item, or folder with everything inside it (a package), to
  // `dest`, whose parent must exist. The copy gets the source's mode, ownership (when permitted),
  // times, user extended attributes and access lists before it appears: a new file is written
  // unnamed in its folder and linked to its name when complete (where the volume allows it);
  // anything else is written under a temporary name (MakeTemporaryName) beside `dest` and renamed
  // into place. On any failure nothing is left behind and an existing destination is untouched. (One exception: when a replaced
  // folder cannot be removed once the new item is in place, the error's operation is "remove the
  // replaced item" and the old item stays under its temporary name, which the engine ignores.)
  // A source file that changes while it is read fails with FsProblem::kSourceChanged. The locked
  // flag and the creation date are not copied. Does not follow a link given as `source`.
  virtual FsResult<CopyReport> CopyItem(const std::string& source, const std::string& dest,
                                        const CopyOptions& options) = 0;
  // Makes an existing item's metadata agree with another's: mode, ownership (when permitted),
  // modification and access times, user extended attributes (those only the destination has are
  // kept) and access lists. Neither item's content or name changes. Acts on links themselves.
  virtual FsStatus CopyMetadata(const std::string& source, const std::string& dest) = 0;
  // Moves the item to the trash of its volume (or the home trash). When that is impossible the
  // item stays where it is and the error has FsProblem::kCannotTrash; it is never deleted instead.
  virtual FsStatus MoveToTrash(const std::string& path) = 0;

  // --- whole files (documents, preferences, indexes) ------------------------------------------

  // The bytes of a regular file; follows links. EISDIR for a folder, EINVAL for any other kind of
  // item, EFBIG when the file holds more than `maxBytes`.
  virtual FsResult<FileBytes> ReadFile(const std::string& path, std::uint64_t maxBytes) = 0;
  // Starts replacing the file at `path` (or making it): a temporary file holding "MGTempFile" is
  // created beside it with `mode`, or else the existing target's mode, or else 0666 less the
  // umask. A private `mode` is set before any byte is written. The parent must exist.
  virtual FsResult<std::unique_ptr<FileWriter>> StartFileWrite(const std::string& path,
                                                               std::optional<std::uint32_t> mode) = 0;

  // --- volumes -------------------------------------------------------------------------------

  // Bytes available to unprivileged users on the volume holding `path` (follows links).
  virtual FsResult<std::uint64_t> GetFreeSpace(const std::string& path) = 0;
  // The mounted volume holding the item (a link is looked up by its own location).
  virtual FsResult<VolumeInfo> GetVolume(const std::string& path) = 0;
  // Whether names in this folder match ignoring case (two names differing in case are one item).
  // On a volume of unknown type, and when `mayCreateProbe`, it may create and remove a probe file
  // with a temporary name (MakeTemporaryName) in the folder, then put back the folder's dates; a
  // dry run passes false and gets an error when nothing else tells.
  virtual FsResult<bool> IsCaseInsensitive(const std::string& folder, bool mayCreateProbe) = 0;
};

// Whether the item at `path` is still what `snapshot` recorded (see ItemSnapshot::Matches).
// A missing item matches an absent snapshot; errors other than a missing item are returned.
FsResult<bool> StillMatches(FileSystem& fs, const std::string& path, const ItemSnapshot& snapshot);

// The real file system, for the parts of the programs that are not given another one.
FileSystem& SystemFileSystem();

}  // namespace marigold
