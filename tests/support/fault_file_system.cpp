#include "support/fault_file_system.h"

#include <algorithm>

namespace marigold {

std::string_view FsOperationName(FsOperation operation) {
  switch (operation) {
    case FsOperation::kGetAttributes: return "get attributes";
    case FsOperation::kListFolder: return "list folder";
    case FsOperation::kReadLink: return "read link";
    case FsOperation::kResolvePath: return "resolve path";
    case FsOperation::kCheckAccess: return "check access";
    case FsOperation::kGetBackupDate: return "get backup date";
    case FsOperation::kCreateFolder: return "create folder";
    case FsOperation::kRemoveItem: return "remove";
    case FsOperation::kRemoveTree: return "remove";
    case FsOperation::kRename: return "rename";
    case FsOperation::kSetTimes: return "set times";
    case FsOperation::kSetMode: return "set mode";
    case FsOperation::kSetOwner: return "set owner";
    case FsOperation::kSetLocked: return "set locked flag";
    case FsOperation::kSetBackupDate: return "set backup date";
    case FsOperation::kCopyItem: return "copy";
    case FsOperation::kCopyMetadata: return "copy metadata";
    case FsOperation::kMoveToTrash: return "move to the trash";
    case FsOperation::kGetFreeSpace: return "get free space";
    case FsOperation::kGetVolume: return "find volume";
    case FsOperation::kIsCaseInsensitive: return "probe letter case";
    case FsOperation::kGetMetadataExtras: return "read metadata";
    case FsOperation::kReadFile: return "read";
    case FsOperation::kStartFileWrite:
    case FsOperation::kWriteFile:
    case FsOperation::kSyncFile: return "write";
  }
  return "file operation";
}

FaultRule FailCall(FsOperation operation, std::string path, int error, int occurrence) {
  FaultRule rule;
  rule.operation = operation;
  rule.path = std::move(path);
  rule.occurrence = occurrence;
  rule.error = error;
  return rule;
}

FaultRule FailEveryCall(FsOperation operation, std::string path, int error) {
  return FailCall(operation, std::move(path), error, 0);
}

FaultRule FailCopyAfter(std::uint64_t afterBytes, int error, std::string path) {
  FaultRule rule = FailCall(FsOperation::kCopyItem, std::move(path), error);
  rule.effect = FaultRule::Effect::kFailAfter;
  rule.afterBytes = afterBytes;
  return rule;
}

FaultRule RunBefore(FsOperation operation, std::string path, std::function<void()> hook) {
  FaultRule rule = FailCall(operation, std::move(path), 0);
  rule.effect = FaultRule::Effect::kHook;
  rule.hook = std::move(hook);
  return rule;
}

FaultFileSystem::FaultFileSystem(FileSystem& inner, std::vector<FaultRule> rules) : mInner(inner) {
  for (FaultRule& rule : rules) AddRule(std::move(rule));
}

void FaultFileSystem::AddRule(FaultRule rule) {
  std::lock_guard lock(mMutex);
  mRules.push_back(Rule{std::move(rule), 0});
}

int FaultFileSystem::CountCalls(FsOperation operation) const {
  std::lock_guard lock(mMutex);
  const auto found = mCallCounts.find(operation);
  return found == mCallCounts.end() ? 0 : found->second;
}

std::optional<FaultRule> FaultFileSystem::Intercept(FsOperation operation, const std::string& path,
                                                    const std::string& secondPath) {
  std::optional<FaultRule> acting;
  {
    std::lock_guard lock(mMutex);
    ++mCallCounts[operation];
    for (Rule& entry : mRules) {
      const FaultRule& rule = entry.rule;
      if (rule.operation != operation) continue;
      if (!rule.path.empty() && rule.path != path && rule.path != secondPath) continue;
      ++entry.seen;
      if (rule.occurrence == 0 || entry.seen == rule.occurrence) {
        acting = rule;
        break;
      }
    }
  }
  // A hook runs outside the lock: it may call the inner file system, or this one.
  if (acting && acting->effect == FaultRule::Effect::kHook && acting->hook) acting->hook();
  return acting;
}

namespace {

FsError Injected(const FaultRule& rule, const std::string& path) {
  return MakeFsError(rule.error, std::string(FsOperationName(rule.operation)), path);
}

bool Fails(const std::optional<FaultRule>& rule) {
  return rule && rule->effect == FaultRule::Effect::kFail;
}

}  // namespace

// Each forwarding method: note the call, let a matching rule act, then pass the call on.
#define MARIGOLD_FORWARD(operation, path, second, call)        \
  do {                                                          \
    auto rule = Intercept(operation, path, second);             \
    if (Fails(rule)) return Injected(*rule, path);              \
    return call;                                                \
  } while (false)

FsResult<ItemAttributes> FaultFileSystem::GetAttributes(const std::string& path) {
  MARIGOLD_FORWARD(FsOperation::kGetAttributes, path, {}, mInner.GetAttributes(path));
}
FsResult<std::vector<FolderEntry>> FaultFileSystem::ListFolder(const std::string& path) {
  MARIGOLD_FORWARD(FsOperation::kListFolder, path, {}, mInner.ListFolder(path));
}
FsResult<std::string> FaultFileSystem::ReadLink(const std::string& path) {
  MARIGOLD_FORWARD(FsOperation::kReadLink, path, {}, mInner.ReadLink(path));
}
FsResult<std::string> FaultFileSystem::ResolvePath(const std::string& path) {
  MARIGOLD_FORWARD(FsOperation::kResolvePath, path, {}, mInner.ResolvePath(path));
}
FsStatus FaultFileSystem::CheckAccess(const std::string& path, int mode) {
  MARIGOLD_FORWARD(FsOperation::kCheckAccess, path, {}, mInner.CheckAccess(path, mode));
}
std::optional<std::int64_t> FaultFileSystem::GetBackupDate(const std::string& path) {
  // A refused read is an absent date, as the real call reports it.
  if (Fails(Intercept(FsOperation::kGetBackupDate, path))) return std::nullopt;
  return mInner.GetBackupDate(path);
}
FsStatus FaultFileSystem::CreateFolder(const std::string& path, std::uint32_t mode,
                                       bool withIntermediates) {
  MARIGOLD_FORWARD(FsOperation::kCreateFolder, path, {},
                   mInner.CreateFolder(path, mode, withIntermediates));
}
FsStatus FaultFileSystem::RemoveItem(const std::string& path) {
  MARIGOLD_FORWARD(FsOperation::kRemoveItem, path, {}, mInner.RemoveItem(path));
}
FsStatus FaultFileSystem::RemoveTree(const std::string& path) {
  MARIGOLD_FORWARD(FsOperation::kRemoveTree, path, {}, mInner.RemoveTree(path));
}
FsStatus FaultFileSystem::Rename(const std::string& from, const std::string& to, bool replace) {
  MARIGOLD_FORWARD(FsOperation::kRename, from, to, mInner.Rename(from, to, replace));
}
FsStatus FaultFileSystem::SetTimes(const std::string& path, FileTime modification,
                                   std::optional<FileTime> access) {
  MARIGOLD_FORWARD(FsOperation::kSetTimes, path, {}, mInner.SetTimes(path, modification, access));
}
FsStatus FaultFileSystem::SetMode(const std::string& path, std::uint32_t mode) {
  MARIGOLD_FORWARD(FsOperation::kSetMode, path, {}, mInner.SetMode(path, mode));
}
FsStatus FaultFileSystem::SetOwner(const std::string& path, std::int64_t uid, std::int64_t gid) {
  MARIGOLD_FORWARD(FsOperation::kSetOwner, path, {}, mInner.SetOwner(path, uid, gid));
}
FsStatus FaultFileSystem::SetLocked(const std::string& path, bool locked) {
  MARIGOLD_FORWARD(FsOperation::kSetLocked, path, {}, mInner.SetLocked(path, locked));
}
FsStatus FaultFileSystem::SetBackupDate(const std::string& path, std::int64_t unixSeconds) {
  MARIGOLD_FORWARD(FsOperation::kSetBackupDate, path, {}, mInner.SetBackupDate(path, unixSeconds));
}
FsStatus FaultFileSystem::CopyMetadata(const std::string& source, const std::string& dest) {
  MARIGOLD_FORWARD(FsOperation::kCopyMetadata, source, dest, mInner.CopyMetadata(source, dest));
}
FsStatus FaultFileSystem::MoveToTrash(const std::string& path) {
  auto rule = Intercept(FsOperation::kMoveToTrash, path);
  if (Fails(rule)) {
    FsError error = Injected(*rule, path);
    error.problem = FsProblem::kCannotTrash;
    return error;
  }
  return mInner.MoveToTrash(path);
}
FsResult<std::uint64_t> FaultFileSystem::GetFreeSpace(const std::string& path) {
  MARIGOLD_FORWARD(FsOperation::kGetFreeSpace, path, {}, mInner.GetFreeSpace(path));
}
FsResult<VolumeInfo> FaultFileSystem::GetVolume(const std::string& path) {
  MARIGOLD_FORWARD(FsOperation::kGetVolume, path, {}, mInner.GetVolume(path));
}
FsResult<bool> FaultFileSystem::IsCaseInsensitive(const std::string& folder, bool mayCreateProbe) {
  MARIGOLD_FORWARD(FsOperation::kIsCaseInsensitive, folder, {}, mInner.IsCaseInsensitive(folder, mayCreateProbe));
}
FsResult<MetadataExtras> FaultFileSystem::GetMetadataExtras(const std::string& path) {
  MARIGOLD_FORWARD(FsOperation::kGetMetadataExtras, path, {}, mInner.GetMetadataExtras(path));
}

FsResult<FileBytes> FaultFileSystem::ReadFile(const std::string& path, std::uint64_t maxBytes) {
  MARIGOLD_FORWARD(FsOperation::kReadFile, path, {}, mInner.ReadFile(path, maxBytes));
}

#undef MARIGOLD_FORWARD

// Wraps the real writer; a failure injected into a write or into the commit drops the real writer
// first, so that its own clean-up is what removes the temporary file.
class FaultFileSystem::Writer final : public FileWriter {
 public:
  Writer(FaultFileSystem& owner, std::string path, std::unique_ptr<FileWriter> inner)
      : mOwner(owner), mPath(std::move(path)), mInner(std::move(inner)) {}

  FsStatus Write(std::string_view bytes) override {
    if (!mFailure.Ok()) return mFailure;
    if (auto rule = mOwner.Intercept(FsOperation::kWriteFile, mPath); Fails(rule)) return Fail(*rule);
    return mInner->Write(bytes);
  }
  FsStatus Commit() override {
    if (!mFailure.Ok()) return mFailure;
    if (auto rule = mOwner.Intercept(FsOperation::kSyncFile, mPath); Fails(rule)) return Fail(*rule);
    if (auto rule = mOwner.Intercept(FsOperation::kRename, mPath); Fails(rule)) return Fail(*rule);
    return mInner->Commit();
  }

 private:
  FsStatus Fail(const FaultRule& rule) {
    mInner.reset();
    mFailure = Injected(rule, mPath);
    return mFailure;
  }

  FaultFileSystem& mOwner;
  std::string mPath;
  std::unique_ptr<FileWriter> mInner;
  FsStatus mFailure;
};

FsResult<std::unique_ptr<FileWriter>> FaultFileSystem::StartFileWrite(const std::string& path,
                                                                      std::optional<std::uint32_t> mode) {
  if (auto rule = Intercept(FsOperation::kStartFileWrite, path); Fails(rule)) return Injected(*rule, path);
  auto inner = mInner.StartFileWrite(path, mode);
  if (!inner) return inner.Error();
  return std::unique_ptr<FileWriter>(std::make_unique<Writer>(*this, path, std::move(inner).Value()));
}

FsResult<CopyReport> FaultFileSystem::CopyItem(const std::string& source, const std::string& dest,
                                               const CopyOptions& options) {
  auto rule = Intercept(FsOperation::kCopyItem, source, dest);
  if (Fails(rule)) return Injected(*rule, dest);
  if (!rule || rule->effect != FaultRule::Effect::kFailAfter) return mInner.CopyItem(source, dest, options);

  // Let the real copy write its first bytes, then stop it as a full disk or a failing device
  // would; the real copy cleans up after itself.
  const std::uint64_t limit = rule->afterBytes;
  bool limitReached = false;
  CopyOptions limited = options;
  limited.progress = [&](std::uint64_t copied, std::uint64_t total) {
    if (copied >= limit) {
      limitReached = true;
      return false;
    }
    return !options.progress || options.progress(copied, total);
  };
  auto result = mInner.CopyItem(source, dest, limited);
  if (!result && limitReached && result.Error().problem == FsProblem::kStopped)
    return Injected(*rule, dest);
  return result;
}

}  // namespace marigold
