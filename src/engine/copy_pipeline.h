// A first copy is mostly new small files, and reading many small files is bound by the disk's
// latency, not by its bandwidth: several reads in flight keep it busy. The data of such files
// travels on a few helper threads, while everything a person or the log sees of a copy (counters,
// the detailed log, errors and their questions, folder dates) stays on the run's worker thread in
// the order of the tree: each piece of work is handed in with a record, and records run in the
// order they were handed in, each once its own work and everything before it is done.
#pragma once

#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

namespace marigold {

class CopyPipeline {
 public:
  using Work = std::function<void()>;    // runs on a helper thread
  using Record = std::function<void()>;  // runs on the thread that owns the pipeline

  // Starts with `threads` helpers and adds more, up to `maxThreads`, while most work waits on the
  // disk: a cold disk serves many small reads at once, while on a warm cache more threads than
  // cores only contend.
  CopyPipeline(unsigned threads, unsigned maxThreads);
  // Waits for the work already started; the records still waiting are dropped.
  ~CopyPipeline();
  CopyPipeline(const CopyPipeline&) = delete;
  CopyPipeline& operator=(const CopyPipeline&) = delete;

  // Hands in `work` and the `record` that follows it; runs the records that are ready, and waits
  // while too much is in flight.
  void Add(Work work, Record record);
  // `record` runs once everything handed in before it is recorded: at once when nothing waits.
  void After(Record record);
  // Waits for all the work and runs every waiting record, in order.
  void Settle();

 private:
  struct Entry {
    Work work;
    Record record;
    bool done = false;  // guarded by mMutex
  };

  void Serve();
  void AddThreadsWhenWaiting();
  // Runs the records at the head whose work is done; with `waitForAll`, waits for the rest too.
  void RunRecords(bool waitForAll);

  std::mutex mMutex;
  std::condition_variable mWorkWaiting;
  std::condition_variable mWorkDone;
  std::deque<std::unique_ptr<Entry>> mOrder;  // the owner's thread only
  std::deque<Entry*> mQueue;                  // work not yet taken, guarded by mMutex
  bool mClosing = false;                      // guarded by mMutex
  std::vector<std::thread> mThreads;          // the owner's thread only
  unsigned mMaxThreads;
  std::atomic<unsigned> mFinished{0};  // work done since the last look
  std::atomic<unsigned> mWaited{0};    // of which had to wait (slept on the disk)
};

}  // namespace marigold
