#include "engine/backup_date_batch.h"

#include <utility>

namespace marigold {
namespace {

constexpr std::size_t kBatchSize = 4096;
// Two writers keep both cores of a small machine busy; more only queue on the journal.
constexpr std::size_t kMaxInFlight = 2;

}  // namespace

BackupDateBatch::BackupDateBatch(FileSystem& fs, std::int64_t unixSeconds)
    : mFs(fs), mDate(unixSeconds), mConcurrent(fs.AllowsConcurrentCalls()) {}

BackupDateBatch::~BackupDateBatch() { Finish(); }

void BackupDateBatch::Add(std::string path) {
  if (!mConcurrent) {
    mFs.SetBackupDate(path, mDate);
    return;
  }
  mPending.push_back(std::move(path));
  if (mPending.size() >= kBatchSize) Dispatch();
}

void BackupDateBatch::Dispatch() {
  if (mInFlight.size() >= kMaxInFlight) {
    mInFlight.front().get();
    mInFlight.erase(mInFlight.begin());
  }
  mInFlight.push_back(std::async(std::launch::async, [this, batch = std::move(mPending)] {
    for (const std::string& path : batch) mFs.SetBackupDate(path, mDate);
  }));
  mPending.clear();
}

void BackupDateBatch::Finish() {
  if (!mPending.empty()) Dispatch();
  for (std::future<void>& writer : mInFlight) writer.get();
  mInFlight.clear();
}

}  // namespace marigold
