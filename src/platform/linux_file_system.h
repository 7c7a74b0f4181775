// The real file system. Every item is reached relative to an open folder (statx, openat, ... with
// AT_SYMLINK_NOFOLLOW), which is also how paths longer than PATH_MAX stay usable. The object
// holds no state, so one instance may serve several threads.
#pragma once

#include "platform/file_system.h"

namespace marigold {

class LinuxFileSystem final : public FileSystem {
 public:
  bool AllowsConcurrentCalls() const override { return true; }
  FsResult<ItemAttributes> GetAttributes(const std::string& path) override;
  FsResult<std::vector<FolderEntry>> ListFolder(const std::string& path) override;
  FsResult<std::string> ReadLink(const std::string& path) override;
  FsResult<std::string> ResolvePath(const std::string& path) override;
  FsStatus CheckAccess(const std::string& path, int mode) override;
  std::optional<std::int64_t> GetBackupDate(const std::string& path) override;
  FsResult<MetadataExtras> GetMetadataExtras(const std::string& path) override;

  FsStatus CreateFolder(const std::string& path, std::uint32_t mode,
                        bool withIntermediates) override;
  FsStatus RemoveItem(const std::string& path) override;
  FsStatus RemoveTree(const std::string& path) override;
  FsStatus Rename(const std::string& from, const std::string& to, bool replace) override;
  FsStatus SetTimes(const std::string& path, FileTime modification,
                    std::optional<FileTime> access) override;
  FsStatus SetMode(const std::string& path, std::uint32_t mode) override;
  FsStatus SetOwner(const std::string& path, std::int64_t uid, std::int64_t gid) override;
  FsStatus SetLocked(const std::string& path, bool locked) override;
  FsStatus SetBackupDate(const std::string& path, std::int64_t unixSeconds) override;

  FsResult<CopyReport> CopyItem(const std::string& source, const std::string& dest,
                                const CopyOptions& options) override;
  FsStatus CopyMetadata(const std::string& source, const std::string& dest) override;
  FsStatus MoveToTrash(const std::string& path) override;

  FsResult<FileBytes> ReadFile(const std::string& path, std::uint64_t maxBytes) override;
  FsResult<std::unique_ptr<FileWriter>> StartFileWrite(const std::string& path,
                                                       std::optional<std::uint32_t> mode) override;

  FsResult<std::uint64_t> GetFreeSpace(const std::string& path) override;
  FsResult<VolumeInfo> GetVolume(const std::string& path) override;
  FsResult<bool> IsCaseInsensitive(const std::string& folder, bool mayCreateProbe) override;
};

// The extended attribute that keeps an item's backup date.
inline constexpr const char* kBackupDateAttribute = "user.marigold.backupdate";

}  // namespace marigold
