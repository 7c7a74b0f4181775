// Programs a test starts for itself (servers, daemons): start one, wait until it is ready, stop it.
#pragma once

#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>

#include <chrono>
#include <string>
#include <thread>
#include <vector>

extern char** environ;

namespace marigold::testing {

// Starts the program at the full path argv[0] with `argv` and this process's environment; -1
// when it cannot start.
inline pid_t Spawn(std::vector<std::string> argv) {
  std::vector<char*> pointers;
  for (std::string& arg : argv) pointers.push_back(arg.data());
  pointers.push_back(nullptr);
  pid_t pid = -1;
  return ::posix_spawn(&pid, pointers[0], nullptr, nullptr, pointers.data(), environ) == 0 ? pid : -1;
}

// Polls `condition` every 50 ms, `tries` times at most; whether it came true.
template <typename Condition>
bool WaitFor(Condition condition, int tries = 100) {
  for (int i = 0; i < tries; ++i, std::this_thread::sleep_for(std::chrono::milliseconds(50)))
    if (condition()) return true;
  return false;
}

// Asks `pid` to end, kills it if it has not within 2.5 s, reaps it, and sets it to -1.
inline void End(pid_t& pid) {
  if (pid <= 0) return;
  ::kill(pid, SIGTERM);
  if (!WaitFor([&] { return ::waitpid(pid, nullptr, WNOHANG) != 0; }, 50)) {
    ::kill(pid, SIGKILL);
    ::waitpid(pid, nullptr, 0);
  }
  pid = -1;
}

}  // namespace marigold::testing
