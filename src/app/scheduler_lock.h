// One timer scheduler per user: whoever fires timers (the daemon, or the desktop program while its
// timers are on) holds this lock, so that no entry ever runs twice. The lock is a file in
// $XDG_RUNTIME_DIR that names its holder; the kernel releases it when the holder's process ends.
#pragma once

#include <string>

namespace marigold {

class SchedulerLock {
 public:
  SchedulerLock() = default;
  ~SchedulerLock() { Release(); }
  SchedulerLock(const SchedulerLock&) = delete;
  SchedulerLock& operator=(const SchedulerLock&) = delete;

  // Takes the lock without waiting and records `holder` ("marigold daemon") with this process's
  // id. False when another process holds it (HolderText says who) or the file cannot be opened.
  bool Acquire(const std::string& holder);
  void Release();
  bool held() const { return mFd >= 0; }
  // Who holds the lock, as its holder recorded it ("marigold daemon, process 4242"), after a
  // refused Acquire; or why the lock file could not be opened.
  const std::string& HolderText() const { return mHolderText; }

  // The lock file: $XDG_RUNTIME_DIR/marigold-scheduler.lock (a private folder in /tmp when unset).
  static std::string LockPath();

 private:
  int mFd = -1;
  std::string mHolderText;
};

}  // namespace marigold
