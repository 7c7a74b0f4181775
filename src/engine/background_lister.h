// Lists side B's sub-folders on a helper thread ahead of the scan, so that side A and side B are
// walked at the same time. The scan hands over, folder by folder, the sub-folders it is likely to
// enter; the helper lists the most recently handed first (the scan goes depth first) and keeps a
// few listings ready. A listing the scan asks for that the helper has not begun is made on the
// scan's thread at once, so the scan never waits for a helper that the machine has not scheduled.
// The helper only reads; what a listing found (or its error) is handed back whole and reported by
// the scan's thread, in the order it always was.
#pragma once

#include <condition_variable>
#include <deque>
#include <map>
#include <mutex>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "platform/file_system.h"

namespace marigold {

class BackgroundLister {
 public:
  // `fs` must allow concurrent calls.
  explicit BackgroundLister(FileSystem& fs) : mFs(fs) {}
  ~BackgroundLister();
  BackgroundLister(const BackgroundLister&) = delete;
  BackgroundLister& operator=(const BackgroundLister&) = delete;

  // Folders the scan may enter next, in the order it would.
  void Expect(const std::vector<std::string>& folders);
  // The listing of `folder`: the helper's, or one made now.
  FsResult<std::vector<FolderEntry>> Take(const std::string& folder);
  // The scan has left the folder that expected these: their listings are not needed any more.
  void Forget(const std::vector<std::string>& folders);

 private:
  void Serve();

  FileSystem& mFs;
  std::mutex mMutex;
  std::condition_variable mWake;
  std::deque<std::string> mPending;  // to list, the next first
  std::set<std::string> mWanted;     // expected and not yet taken or forgotten
  std::string mListing;              // being listed by the helper; empty when idle
  std::map<std::string, FsResult<std::vector<FolderEntry>>> mReady;
  bool mQuit = false;
  std::thread mThread;
};

}  // namespace marigold
