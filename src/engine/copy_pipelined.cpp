// The items a first copy is made of, new folders and new small files, handed to the copy
// pipeline: a folder is made at once (its contents go into it next) and only its record waits;
// a file's data travels on a helper thread. Anything out of the ordinary (a replacement, a locked
// or large file, a folder that must be opened first, a failure) takes the one-by-one road of
// PerformNode once the pipeline has settled, so it is reported exactly as it always was.
#include <memory>
#include <optional>

#include "engine/copy_executor.h"
#include "engine/copy_mode.h"
#include "engine/copy_pipeline.h"

namespace marigold {

namespace {

// Larger files are copied one at a time on the worker thread, where their progress is shown.
constexpr std::uint64_t kPipelinedFileSize = 1 << 20;
// On a warm cache a few threads do the work; a cold disk keeps many more reads in flight.
constexpr unsigned kPipelineThreads = 4;
constexpr unsigned kPipelineMaxThreads = 12;

// A new file's copy, shared by the helper thread that makes it and the record that follows.
struct PipelinedFile {
  std::string src;
  std::string dst;
  ItemAttributes source;
  std::optional<FsResult<CopyReport>> copied;
};

}  // namespace

bool CopyExecutor::TryPipelined(const ScanNode& node, const std::string& a, const std::string& b) {
  const int mode = node.copyMode;
  if (mode != kCopyModeCopyAToB && mode != kCopyModeCopyBToA) return false;
  // A fault-injecting file system answers one call at a time; a followed link is resolved first.
  if (!mContext.fs.AllowsConcurrentCalls() || node.resolvedLinks != 0) return false;
  const bool fromA = mode == kCopyModeCopyAToB;
  const ItemSnapshot& itemSnapshot = fromA ? node.snapshotA : node.snapshotB;
  // The scan saw something at the destination: a replacement, with its own checks.
  if ((fromA ? node.snapshotB : node.snapshotA).exists) return false;
  const std::string& item = fromA ? a : b;
  const std::string& other = fromA ? b : a;

  auto attributes = mContext.fs.GetAttributes(item);
  if (!attributes || !itemSnapshot.exists || itemSnapshot.kind != attributes.Value().kind) return false;
  const ItemAttributes& attrs = attributes.Value();
  if (attrs.IsFolder()) return (!attrs.isPackage || node.hasSubItems) && PipelineNewFolder(other, !fromA);
  if (attrs.kind != ItemKind::kFile || attrs.isLocked || attrs.size > kPipelinedFileSize) return false;

  const std::string parent = ParentFolderOf(other);
  if (!FolderKnownReady(parent)) {
    auto folder = mContext.fs.GetAttributes(parent);
    if (!folder || !folder.Value().IsFolder() || !MayChangeItemsIn(parent)) return false;
    RememberReadyFolder(parent);
  }
  PipelineNewFile(item, other, !fromA, attrs);
  return true;
}

bool CopyExecutor::PipelineNewFolder(const std::string& folder, bool sideA) {
  // Without intermediates: a missing parent, or anything already at the name, is a case for the
  // one-by-one road and its messages.
  if (!mContext.fs.CreateFolder(folder, kNewFolderMode, false)) return false;
  AfterPending([this, folder, sideA] {
    RunState& state = mContext.state;
    ++state.Side(sideA).FoldersCreated;
    AddSuccessLine(mWords.createdFolder, folder);
    mContext.services.folders->RemoveItemOKFromRestore(state, folder);
    CountItemDone();
  });
  return true;
}

void CopyExecutor::PipelineNewFile(const std::string& src, const std::string& dst, bool sideA,
                                   const ItemAttributes& source) {
  if (!mPipeline) mPipeline = std::make_unique<CopyPipeline>(kPipelineThreads, kPipelineMaxThreads);
  auto file = std::make_shared<PipelinedFile>(PipelinedFile{src, dst, source, std::nullopt});
  const CopyOptions options = TaskCopyOptions(&file->source);
  FileSystem& fs = mContext.fs;
  mPipeline->Add([file, options, &fs] { file->copied = fs.CopyItem(file->src, file->dst, options); },
                 [this, file, sideA] {
                   const bool copied = file->copied &&
                                       RecordNewFile(file->src, file->dst, sideA, &file->source, *file->copied);
                   if (copied) CountItemDone();
                   else mPipelineFailed = true;
                 });
}

void CopyExecutor::Settle() {
  if (mPipeline) mPipeline->Settle();
}

void CopyExecutor::AfterPending(std::function<void()> record) {
  if (mPipeline) mPipeline->After(std::move(record));
  else record();
}

void CopyExecutor::CountItemDone() {
  RunState& state = mContext.state;
  state.gAtLeastOneItemDone = true;
  state.tallies.runItemsToDo.fetch_sub(1, std::memory_order_relaxed);
}

}  // namespace marigold
