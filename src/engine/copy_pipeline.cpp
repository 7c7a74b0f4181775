#include "engine/copy_pipeline.h"

namespace marigold {

namespace {

// Enough to keep a few threads and the disk's queue busy; few enough that a Stop is not followed
// by a long tail of copies already under way.
constexpr std::size_t kMaxInFlight = 128;

}  // namespace

CopyPipeline::CopyPipeline(unsigned threads) {
  for (unsigned index = 0; index < threads; ++index) mThreads.emplace_back([this] { Serve(); });
}

CopyPipeline::~CopyPipeline() {
  {
    std::lock_guard<std::mutex> lock(mMutex);
    mClosing = true;
    mQueue.clear();
  }
  mWorkWaiting.notify_all();
  for (std::thread& thread : mThreads) thread.join();
}

void CopyPipeline::Add(Work work, Record record) {
  while (mOrder.size() >= kMaxInFlight) {
    Entry& head = *mOrder.front();
    {
      std::unique_lock<std::mutex> lock(mMutex);
      mWorkDone.wait(lock, [&] { return head.done; });
    }
    RunRecords(false);
  }
  auto entry = std::make_unique<Entry>();
  entry->work = std::move(work);
  entry->record = std::move(record);
  Entry* raw = entry.get();
  mOrder.push_back(std::move(entry));
  {
    std::lock_guard<std::mutex> lock(mMutex);
    mQueue.push_back(raw);
  }
  mWorkWaiting.notify_one();
  RunRecords(false);
}

void CopyPipeline::After(Record record) {
  if (mOrder.empty()) {
    record();
    return;
  }
  auto entry = std::make_unique<Entry>();
  entry->record = std::move(record);
  entry->done = true;  // no work: only the order holds it back
  mOrder.push_back(std::move(entry));
}

void CopyPipeline::Settle() { RunRecords(true); }

void CopyPipeline::RunRecords(bool waitForAll) {
  while (!mOrder.empty()) {
    Entry& head = *mOrder.front();
    {
      std::unique_lock<std::mutex> lock(mMutex);
      if (!head.done) {
        if (!waitForAll) return;
        mWorkDone.wait(lock, [&] { return head.done; });
      }
    }
    std::unique_ptr<Entry> entry = std::move(mOrder.front());
    mOrder.pop_front();
    if (entry->record) entry->record();
  }
}

void CopyPipeline::Serve() {
  for (;;) {
    Entry* entry = nullptr;
    {
      std::unique_lock<std::mutex> lock(mMutex);
      mWorkWaiting.wait(lock, [&] { return mClosing || !mQueue.empty(); });
      if (mQueue.empty()) return;
      entry = mQueue.front();
      mQueue.pop_front();
    }
    entry->work();
    {
      std::lock_guard<std::mutex> lock(mMutex);
      entry->done = true;
    }
    mWorkDone.notify_all();
  }
}

}  // namespace marigold
