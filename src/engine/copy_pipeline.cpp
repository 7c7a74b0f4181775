#include "engine/copy_pipeline.h"

#include <sys/resource.h>

namespace marigold {

namespace {

// Enough to keep a few threads and the disk's queue busy; few enough that a Stop is not followed
// by a long tail of copies already under way.
constexpr std::size_t kMaxInFlight = 128;
// How much work is looked at before deciding on more threads, and how many are then added.
constexpr unsigned kWindow = 64;
constexpr unsigned kThreadsAdded = 2;

// Sleeps of the calling thread so far: a piece of work that slept waited for the disk (being
// preempted for another thread is not a sleep).
long VoluntarySwitches() {
  rusage usage{};
  ::getrusage(RUSAGE_THREAD, &usage);
  return usage.ru_nvcsw;
}

}  // namespace

CopyPipeline::CopyPipeline(unsigned threads, unsigned maxThreads) : mMaxThreads(maxThreads) {
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
  AddThreadsWhenWaiting();
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

void CopyPipeline::AddThreadsWhenWaiting() {
  if (mThreads.size() >= mMaxThreads || mFinished.load(std::memory_order_relaxed) < kWindow) return;
  const unsigned waited = mWaited.exchange(0, std::memory_order_relaxed);
  const unsigned finished = mFinished.exchange(0, std::memory_order_relaxed);
  if (waited * 2 < finished) return;
  for (unsigned added = 0; added < kThreadsAdded && mThreads.size() < mMaxThreads; ++added)
    mThreads.emplace_back([this] { Serve(); });
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
    const long switches = VoluntarySwitches();
    entry->work();
    if (VoluntarySwitches() != switches) mWaited.fetch_add(1, std::memory_order_relaxed);
    mFinished.fetch_add(1, std::memory_order_relaxed);
    {
      std::lock_guard<std::mutex> lock(mMutex);
      entry->done = true;
    }
    mWorkDone.notify_all();
  }
}

}  // namespace marigold
