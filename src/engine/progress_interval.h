// The console's count of items still to do while a run copies. It is not refreshed per item: a
// refresher ticks at an interval that grows with the run's size and shows the count only when
// it changed since the last tick, so a run of a million items costs a few hundred refreshes.
#pragma once

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <thread>

#include "engine/appkit_proxy.h"
#include "engine/run_state.h"

namespace marigold {

// Seconds between two refreshes for a run of `itemsTotal` items: up to 500 → 0 (as often as the
// display likes), up to 1000 → 0.5, up to 2000 → 1, more → 2.
double ConsoleUpdateInterval(std::int64_t itemsTotal);

// The refresh of the count: started before a task is copied, stopped after it. Ticks on its own
// thread and calls AppkitProxy::UpdateItemsToDo from there, so the proxy's console updates must
// be safe to call while the worker is inside another proxy call.
class ItemsToDoRefresher {
 public:
  ItemsToDoRefresher(AppkitProxy& proxy, const RunTallies& tallies);
  ~ItemsToDoRefresher();
  ItemsToDoRefresher(const ItemsToDoRefresher&) = delete;
  ItemsToDoRefresher& operator=(const ItemsToDoRefresher&) = delete;

  // Starts ticking every `intervalSeconds` (0 means the shortest refresh the thread allows).
  // A running refresher is restarted with the new interval.
  void Start(double intervalSeconds);
  // Stops ticking and waits for the thread; does nothing when not started.
  void Stop();
  // Forgets the last count shown, so the next tick shows the count whatever it is.
  void ResetLastShown() { mLastShown = -1; }
  // One tick: shows runItemsToDo and runItemsTotal when the count changed since the last tick.
  // Returns whether it showed anything.
  bool UpdateItemsToDoField();

 private:
  void Loop(double intervalSeconds);

  AppkitProxy& mProxy;
  const RunTallies& mTallies;
  std::atomic<std::int64_t> mLastShown{-1};
  std::mutex mMutex;
  std::condition_variable mWake;
  bool mStopping = false;
  std::thread mThread;
};

}  // namespace marigold
