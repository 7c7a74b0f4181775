#include "app/scheduler_lock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>

namespace marigold {

std::string SchedulerLock::LockPath() {
  const char* runtime = std::getenv("XDG_RUNTIME_DIR");
  std::string folder;
  if (runtime != nullptr && runtime[0] == '/') {
    folder = runtime;
  } else {
    folder = "/tmp/marigold-" + std::to_string(::getuid());
    ::mkdir(folder.c_str(), 0700);
  }
  return folder + "/marigold-scheduler.lock";
}

bool SchedulerLock::Acquire(const std::string& holder) {
  if (mFd >= 0) return true;
  const std::string path = LockPath();
  const int fd = ::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
  if (fd < 0) {
    mHolderText = "the lock file \"" + path + "\" cannot be opened: " + std::strerror(errno);
    return false;
  }
  if (::flock(fd, LOCK_EX | LOCK_NB) != 0) {
    char buffer[512] = {};
    const ssize_t got = ::pread(fd, buffer, sizeof buffer - 1, 0);
    mHolderText = got > 0 ? std::string(buffer, static_cast<std::size_t>(got)) : "another process";
    while (!mHolderText.empty() && mHolderText.back() == '\n') mHolderText.pop_back();
    ::close(fd);
    return false;
  }
  const std::string text = holder + ", process " + std::to_string(::getpid()) + "\n";
  if (::ftruncate(fd, 0) != 0 || ::pwrite(fd, text.data(), text.size(), 0) < 0) {
    // The lock holds even when its note cannot be written; a refused scheduler then names no one.
  }
  mFd = fd;
  return true;
}

void SchedulerLock::Release() {
  if (mFd < 0) return;
  ::close(mFd);
  mFd = -1;
}

}  // namespace marigold
