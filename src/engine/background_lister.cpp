#include "engine/background_lister.h"

#include <algorithm>

namespace marigold {

namespace {
// Listings kept ready at most: enough to keep the helper ahead, few enough for a small memory.
constexpr std::size_t kMostReady = 32;
}  // namespace

BackgroundLister::~BackgroundLister() {
  if (!mThread.joinable()) return;
  {
    std::lock_guard lock(mMutex);
    mQuit = true;
  }
  mWake.notify_all();
  mThread.join();
}

void BackgroundLister::Expect(const std::vector<std::string>& folders) {
  if (folders.empty()) return;
  {
    std::lock_guard lock(mMutex);
    mPending.insert(mPending.begin(), folders.begin(), folders.end());
    mWanted.insert(folders.begin(), folders.end());
  }
  if (!mThread.joinable()) mThread = std::thread([this] { Serve(); });
  mWake.notify_all();
}

FsResult<std::vector<FolderEntry>> BackgroundLister::Take(const std::string& folder) {
  std::unique_lock lock(mMutex);
  auto pending = std::find(mPending.begin(), mPending.end(), folder);
  if (pending != mPending.end()) mPending.erase(pending);
  // The helper is on it: its listing is as good as one made now, and nearly done.
  mWake.wait(lock, [&] { return mListing != folder; });
  mWanted.erase(folder);
  auto ready = mReady.find(folder);
  if (ready == mReady.end()) {
    lock.unlock();
    return mFs.ListFolder(folder);
  }
  FsResult<std::vector<FolderEntry>> result = std::move(ready->second);
  mReady.erase(ready);
  mWake.notify_all();  // room for one more
  return result;
}

void BackgroundLister::Forget(const std::vector<std::string>& folders) {
  std::lock_guard lock(mMutex);
  for (const std::string& folder : folders) {
    mWanted.erase(folder);
    mReady.erase(folder);
  }
  std::erase_if(mPending, [&](const std::string& folder) { return !mWanted.contains(folder); });
  mWake.notify_all();
}

void BackgroundLister::Serve() {
  std::unique_lock lock(mMutex);
  for (;;) {
    mWake.wait(lock, [this] { return mQuit || (!mPending.empty() && mReady.size() < kMostReady); });
    if (mQuit) return;
    mListing = std::move(mPending.front());
    mPending.pop_front();
    lock.unlock();
    auto listing = mFs.ListFolder(mListing);
    lock.lock();
    if (mWanted.contains(mListing)) mReady.emplace(mListing, std::move(listing));
    mListing.clear();
    mWake.notify_all();
  }
}

}  // namespace marigold
