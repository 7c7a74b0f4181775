// Metadata: the metadata-only copy with its case-only rename, folder attributes after a walk, the
// finishing touches of a copy (backup date, locked flag), and the free-space check of a replace.
#include <syslog.h>

#include <cerrno>

#include <string>
#include <vector>

#include "engine/copy_executor.h"
#include "engine/error_path.h"
#include "util/strings_table.h"
#include "util/temporary_names.h"

namespace marigold {

namespace {

constexpr int kMaxUniqueNameTries = 100;

// The data a file will take: its blocks when it is sparse, its length otherwise.
std::uint64_t DataSize(const ItemAttributes& attributes) {
  if (attributes.kind != ItemKind::kFile) return attributes.size;
  if (attributes.allocatedBytes > 0 && attributes.allocatedBytes < attributes.size) return attributes.allocatedBytes;
  return attributes.size;
}

}  // namespace

bool CopyExecutor::QLCopySingleMetadataOnly(const std::string& src, const std::string& dst, bool sideA,
                                            std::string* renamedTo) {
  FileSystem& fs = mContext.fs;
  RunState& state = mContext.state;
  std::string target = dst;
  const std::string sourceName(LastPathComponent(src));
  if (sourceName != LastPathComponent(dst)) {
    // The names differ in case only; a folder that ignores case cannot rename one onto the other
    // directly, so the item passes through a name of its own.
    const std::string folder = ParentFolderOf(dst);
    auto temporary = FindUniqueNameInFolder(folder);
    if (!temporary)
      return ReportError({GLS("Can't rename the destination item"), " ", Quoted(dst), " ",
                          GLS("because I can't find an unique new name on its parent folder"), " ", Quoted(folder)});
    const std::string temporaryPath = ChildPath(folder, *temporary);
    const std::string renamed = ChildPath(folder, sourceName);
    FsStatus moved = fs.Rename(dst, temporaryPath, false);
    if (moved) {
      moved = fs.Rename(temporaryPath, renamed, false);
      if (!moved) fs.Rename(temporaryPath, dst, false);
    }
    if (!moved)
      return ReportError({GLS("Can't rename the destination item"), " ", Quoted(dst), " ", GLS("to the new name"), " ",
                          Quoted(sourceName)});
    target = renamed;
    ++state.Side(sideA).FilesRenamed;
    if (renamedTo != nullptr) *renamedTo = renamed;
  }
  FsStatus copied = fs.CopyMetadata(src, target);
  if (!copied)
    return ReportError({GLS("Can't copy attributes from the item"), " ", Quoted(src), "\r", mWords.to, " ",
                        Quoted(target)});
  auto origin = fs.GetAttributes(src);
  if (origin && origin.Value().kind != ItemKind::kSymlink) {
    FsStatus dated = fs.SetBackupDate(target, state.gStartSyncDateTimeUTC);
    if (!dated) LogAttributeFailure("QLCopySingleMetadataOnly SetBackupDate", target, dated.Error().code);
  }
  return true;
}

bool CopyExecutor::CopyFolderAttributes(const std::string& from, const std::string& to, const FileTime& modifDate) {
  bool ok = true;
  FsStatus copied = mContext.fs.CopyMetadata(from, to);
  // A folder that was never made (its parent went earlier in the run) has nothing to agree with.
  if (!copied && copied.Error().IsMissing()) return false;
  if (!copied) {
    LogAttributeFailure("CopyFolderAttributes CopyMetadata", to, copied.Error().code);
    ok = false;
  }
  FsStatus dated = mContext.fs.SetTimes(to, modifDate, std::nullopt);
  if (!dated) {
    LogAttributeFailure("CopyFolderAttributes SetTimes", to, dated.Error().code);
    ok = false;
  }
  return ok;
}

bool CopyExecutor::SetAttrsAfterCopy(const std::string& origin, const std::string& copy, std::int64_t backupDate) {
  auto attributes = mContext.fs.GetAttributes(origin);
  if (!attributes) {
    LogAttributeFailure("SetAttrsAfterCopy GetAttributes", origin, attributes.Error().code);
    return false;
  }
  return SetAttrsAfterCopy(attributes.Value(), copy, backupDate);
}

bool CopyExecutor::FinishCopy(const std::string& src, const ItemAttributes* source, const std::string& copy,
                              int backupDateError) {
  if (backupDateError != 0) LogBackupDateFailure(copy, backupDateError);
  bool locked = false;
  if (source != nullptr) {
    locked = source->isLocked;
  } else {
    auto attributes = mContext.fs.GetAttributes(src);
    if (!attributes) {
      LogAttributeFailure("SetAttrsAfterCopy GetAttributes", src, attributes.Error().code);
      return false;
    }
    locked = attributes.Value().isLocked;
  }
  // The locked flag goes last: nothing can be written onto a locked item.
  if (!locked) return backupDateError == 0;
  FsStatus lockedNow = mContext.fs.SetLocked(copy, true);
  if (!lockedNow) LogAttributeFailure("SetAttrsAfterCopy SetLocked", copy, lockedNow.Error().code);
  return lockedNow && backupDateError == 0;
}

void CopyExecutor::LogBackupDateFailure(const std::string& copy, int code) {
  // A volume that keeps no backup dates is said once, not once per item.
  const bool volumeRefuses = code == EOPNOTSUPP || code == ENOTSUP;
  if (!volumeRefuses || !mBackupDateRefused) LogAttributeFailure("SetAttrsAfterCopy SetBackupDate", copy, code);
  if (volumeRefuses) mBackupDateRefused = true;
}

bool CopyExecutor::SetAttrsAfterCopy(const ItemAttributes& origin, const std::string& copy, std::int64_t backupDate) {
  FileSystem& fs = mContext.fs;
  bool ok = true;
  // Links keep no backup date on this platform; asking for one would only fill the log.
  if (origin.kind != ItemKind::kSymlink) {
    FsStatus dated = fs.SetBackupDate(copy, backupDate);
    if (!dated) {
      ok = false;
      LogBackupDateFailure(copy, dated.Error().code);
    }
  }
  // The locked flag goes last: nothing can be written onto a locked item.
  if (origin.isLocked) {
    FsStatus locked = fs.SetLocked(copy, true);
    if (!locked) {
      LogAttributeFailure("SetAttrsAfterCopy SetLocked", copy, locked.Error().code);
      ok = false;
    }
  }
  return ok;
}

bool CopyExecutor::CheckFreeSpaceFor(const std::string& item, const std::string& destFolder, std::string& errStr) {
  auto free = mContext.fs.GetFreeSpace(destFolder);
  if (!free) return true;  // unknown: the copy itself reports a full disk
  const std::uint64_t needed = NewItemSize(item);
  if (needed <= free.Value()) return true;
  errStr = GLS("Error:") + " " + GLS("Not enough space on the destination disk.") + "\r" + GLS("Free Memory:") + " " +
           std::to_string(free.Value()) + " " + GLS("bytes") + "\r" + GLS("Memory Required:") + " " +
           std::to_string(needed) + " " + GLS("bytes");
  return false;
}

std::uint64_t CopyExecutor::NewItemSize(const std::string& item) {
  FileSystem& fs = mContext.fs;
  auto attributes = fs.GetAttributes(item);
  if (!attributes) return 0;
  if (!attributes.Value().IsFolder()) return DataSize(attributes.Value());
  // A package can be deep; a list of folders still to add up keeps the stack flat.
  std::uint64_t total = 0;
  std::vector<std::string> folders{item};
  while (!folders.empty()) {
    std::string folder = std::move(folders.back());
    folders.pop_back();
    auto entries = fs.ListFolder(folder);
    if (!entries) continue;
    for (const FolderEntry& entry : entries.Value()) {
      if (entry.attributes.IsFolder()) folders.push_back(ChildPath(folder, entry.name));
      else total += DataSize(entry.attributes);
    }
  }
  return total;
}

std::optional<std::string> CopyExecutor::FindUniqueNameInFolder(const std::string& folder) {
  for (int index = 0; index < kMaxUniqueNameTries; ++index) {
    std::string name = MakeTemporaryName(TemporaryKind::kRename);
    auto existing = mContext.fs.GetAttributes(ChildPath(folder, name));
    if (!existing && existing.Error().IsMissing()) return name;
    if (!existing) return std::nullopt;
  }
  return std::nullopt;
}

void CopyExecutor::LogAttributeFailure(const char* what, const std::string& path, int code) {
  ::syslog(LOG_WARNING, "%s: %s - Err: %d", what, path.c_str(), code);
}

}  // namespace marigold
