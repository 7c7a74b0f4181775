#include "engine/progress_interval.h"

#include <chrono>

namespace marigold {
namespace {

// An interval of 0 still needs a pause between ticks; a tenth of a second looks continuous.
constexpr double kShortestTick = 0.1;

}  // namespace

double ConsoleUpdateInterval(std::int64_t itemsTotal) {
  if (itemsTotal <= 500) return 0.0;
  if (itemsTotal <= 1000) return 0.5;
  if (itemsTotal <= 2000) return 1.0;
  return 2.0;
}

ItemsToDoRefresher::ItemsToDoRefresher(AppkitProxy& proxy, const RunTallies& tallies)
    : mProxy(proxy), mTallies(tallies) {}

ItemsToDoRefresher::~ItemsToDoRefresher() { Stop(); }

void ItemsToDoRefresher::Start(double intervalSeconds) {
  Stop();
  {
    std::lock_guard<std::mutex> lock(mMutex);
    mStopping = false;
  }
  mThread = std::thread([this, intervalSeconds] { Loop(intervalSeconds); });
}

void ItemsToDoRefresher::Stop() {
  if (!mThread.joinable()) return;
  {
    std::lock_guard<std::mutex> lock(mMutex);
    mStopping = true;
  }
  mWake.notify_all();
  mThread.join();
}

bool ItemsToDoRefresher::UpdateItemsToDoField() {
  const std::int64_t itemsToDo = mTallies.runItemsToDo.load(std::memory_order_relaxed);
  if (mLastShown.exchange(itemsToDo) == itemsToDo) return false;
  mProxy.UpdateItemsToDo(itemsToDo, mTallies.runItemsTotal);
  return true;
}

void ItemsToDoRefresher::Loop(double intervalSeconds) {
  const auto period = std::chrono::duration<double>(intervalSeconds > kShortestTick ? intervalSeconds : kShortestTick);
  std::unique_lock<std::mutex> lock(mMutex);
  while (!mWake.wait_for(lock, period, [this] { return mStopping; })) {
    lock.unlock();
    UpdateItemsToDoField();
    lock.lock();
  }
}

}  // namespace marigold
