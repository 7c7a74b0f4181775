// A FileSystem for tests: forwards every call to another FileSystem, except the calls that match
// one of its rules, which fail or run a test's hook first. Faults thus
// hit a real temporary tree, and the real implementation's clean-up is what gets tested.
//
//   FaultFileSystem fs{real, {FailCopyAfter(4096, ENOSPC), FailCall(FsOperation::kRename, p, EIO)}};
#pragma once

#include <cerrno>
#include <cstdint>
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/file_system.h"

namespace marigold {

enum class FsOperation {
  kGetAttributes, kListFolder, kReadLink, kResolvePath, kCheckAccess, kGetBackupDate,
  kCreateFolder, kRemoveItem, kRemoveTree, kRename, kSetTimes, kSetMode, kSetOwner, kSetLocked,
  kSetBackupDate, kCopyItem, kCopyMetadata, kMoveToTrash, kGetFreeSpace, kGetVolume,
  kIsCaseInsensitive, kGetMetadataExtras, kReadFile,
  kStartFileWrite,  // making the temporary file of a whole-file write
  kWriteFile,       // each FileWriter::Write
  kSyncFile,        // the sync in FileWriter::Commit; its rename is a kRename of the target
};

// The operation's name as FsError::operation carries it ("rename", "copy", ...).
std::string_view FsOperationName(FsOperation operation);

struct FaultRule {
  enum class Effect {
    kFail,       // the call fails with `error` without reaching the real file system
    kFailAfter,  // CopyItem only: the real copy runs and is stopped after `afterBytes` bytes,
                 // then the call reports `error` (the real clean-up has run)
    kHook,       // `hook` runs, then the call runs
  };
  FsOperation operation = FsOperation::kGetAttributes;
  std::string path;    // matches a call whose first or second path equals it; empty matches all
  int occurrence = 1;  // act on the Nth matching call (1 = the first); 0 = on every one
  Effect effect = Effect::kFail;
  int error = EIO;
  std::uint64_t afterBytes = 0;
  std::function<void()> hook;
};

// Fails the `occurrence`th call of `operation` on `path` (empty: any path) with `error`.
FaultRule FailCall(FsOperation operation, std::string path, int error, int occurrence = 1);
// Fails every call of `operation` on `path` with `error`.
FaultRule FailEveryCall(FsOperation operation, std::string path, int error);
// Lets a copy (of `path`, or any copy) write `afterBytes` bytes, then fails it with `error`.
FaultRule FailCopyAfter(std::uint64_t afterBytes, int error, std::string path = {});
// Runs `hook` just before the first `operation` call on `path` (to change a file, for instance).
FaultRule RunBefore(FsOperation operation, std::string path, std::function<void()> hook);

class FaultFileSystem : public FileSystem {
 public:
  explicit FaultFileSystem(FileSystem& inner, std::vector<FaultRule> rules = {});

  // Adds a rule; rules are tried in the order added and the first matching one acts.
  void AddRule(FaultRule rule);
  // How many calls of `operation` were received.
  int CountCalls(FsOperation operation) const;
  // Lets the engine call from several threads at once, as it does the real file system; the
  // test's own hooks must then be safe to run on any thread.
  void AllowConcurrentCalls(bool allow) { mConcurrent = allow; }
  bool AllowsConcurrentCalls() const override { return mConcurrent; }

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

 private:
  class Writer;
  struct Rule {
    FaultRule rule;
    int seen = 0;
  };
  // Records the call and returns the rule that acts on it, if any (its hook or vanish effect
  // already carried out); the returned rule is a copy, so later changes do not race with it.
  std::optional<FaultRule> Intercept(FsOperation operation, const std::string& path,
                                     const std::string& secondPath = {});

  FileSystem& mInner;
  mutable std::mutex mMutex;
  std::vector<Rule> mRules;
  std::map<FsOperation, int> mCallCounts;  // every call received, failed ones included
  bool mConcurrent = false;
};

}  // namespace marigold
