#include "platform/process_runner.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <pthread.h>
#include <unistd.h>

#include <chrono>
#include <cstring>
#include <map>

extern char** environ;

namespace marigold {
namespace {

using Clock = std::chrono::steady_clock;

struct Pipe {
  int read = -1, write = -1;
  bool Open() {
    int fds[2];
    if (::pipe2(fds, O_CLOEXEC) != 0) return false;
    read = fds[0];
    write = fds[1];
    return true;
  }
  static void Close(int& fd) {
    if (fd >= 0) ::close(fd);
    fd = -1;
  }
  ~Pipe() {
    Close(read);
    Close(write);
  }
};

std::vector<std::string> MergedEnvironment(const ProcessRequest& request) {
  std::map<std::string, std::string> values;
  for (char** entry = environ; entry != nullptr && *entry != nullptr; ++entry) {
    const char* equals = std::strchr(*entry, '=');
    if (equals != nullptr) values[std::string(*entry, static_cast<std::size_t>(equals - *entry))] = equals + 1;
  }
  for (const auto& [name, value] : request.environment) values[name] = value;
  std::vector<std::string> merged;
  for (const auto& [name, value] : values) merged.push_back(name + "=" + value);
  return merged;
}

std::vector<char*> Pointers(std::vector<std::string>& texts) {
  std::vector<char*> pointers;
  for (std::string& text : texts) pointers.push_back(text.data());
  pointers.push_back(nullptr);
  return pointers;
}

int StatusOf(int waitStatus) {
  if (WIFEXITED(waitStatus)) return WEXITSTATUS(waitStatus);
  if (WIFSIGNALED(waitStatus)) return 128 + WTERMSIG(waitStatus);
  return -1;
}

// A program that exits before it read its input must not end this process with SIGPIPE: the
// signal is held back for this thread while the program runs, and a pending one is discarded.
class SigpipeHeld {
 public:
  SigpipeHeld() {
    sigemptyset(&mPipe);
    sigaddset(&mPipe, SIGPIPE);
    pthread_sigmask(SIG_BLOCK, &mPipe, &mOld);
  }
  ~SigpipeHeld() {
    const timespec none{0, 0};
    while (sigtimedwait(&mPipe, nullptr, &none) > 0) {
    }
    pthread_sigmask(SIG_SETMASK, &mOld, nullptr);
  }

 private:
  sigset_t mPipe, mOld;
};

}  // namespace

ProcessOutcome RunProcess(const ProcessRequest& request) {
  SigpipeHeld sigpipeHeld;
  ProcessOutcome outcome;
  if (request.argv.empty()) {
    outcome.startError = "no program";
    return outcome;
  }
  Pipe in, out, err;
  if (!in.Open() || !out.Open() || !err.Open()) {
    outcome.startError = std::strerror(errno);
    return outcome;
  }
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, in.read, 0);
  posix_spawn_file_actions_adddup2(&actions, out.write, 1);
  posix_spawn_file_actions_adddup2(&actions, err.write, 2);
  posix_spawnattr_t attributes;
  posix_spawnattr_init(&attributes);
  // Its own group, so that Stop ends what the program started as well.
  posix_spawnattr_setpgroup(&attributes, 0);
  sigset_t defaults;
  sigemptyset(&defaults);
  sigaddset(&defaults, SIGPIPE);
  posix_spawnattr_setsigdefault(&attributes, &defaults);
  posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETPGROUP | POSIX_SPAWN_SETSIGDEF);

  std::vector<std::string> argv = request.argv;
  std::vector<std::string> environment = MergedEnvironment(request);
  std::vector<char*> argvPointers = Pointers(argv);
  std::vector<char*> environmentPointers = Pointers(environment);
  pid_t pid = -1;
  const int spawned =
      ::posix_spawnp(&pid, argv[0].c_str(), &actions, &attributes, argvPointers.data(), environmentPointers.data());
  posix_spawn_file_actions_destroy(&actions);
  posix_spawnattr_destroy(&attributes);
  Pipe::Close(in.read);
  Pipe::Close(out.write);
  Pipe::Close(err.write);
  if (spawned != 0) {
    outcome.startError = std::strerror(spawned);
    return outcome;
  }
  outcome.started = true;
  ::fcntl(in.write, F_SETFL, O_NONBLOCK);
  if (request.input.empty()) Pipe::Close(in.write);

  std::size_t written = 0;
  bool exited = false;
  int waitStatus = 0;
  Clock::time_point exitedAt{};
  Clock::time_point termSentAt{};
  bool termSent = false;
  char buffer[4096];
  while (true) {
    if (!exited) {
      const pid_t done = ::waitpid(pid, &waitStatus, WNOHANG);
      if (done == pid) {
        exited = true;
        exitedAt = Clock::now();
      }
    }
    if (!exited && request.keepRunning != nullptr && !request.keepRunning->load()) {
      outcome.stopped = true;
      if (!termSent) {
        ::kill(-pid, SIGTERM);
        termSent = true;
        termSentAt = Clock::now();
      } else if (Clock::now() - termSentAt > std::chrono::seconds(2)) {
        ::kill(-pid, SIGKILL);
      }
    }
    if (out.read < 0 && err.read < 0 && exited) break;
    if (exited && Clock::now() - exitedAt > std::chrono::seconds(1)) break;
    pollfd fds[3];
    int count = 0;
    for (int fd : {out.read, err.read}) {
      if (fd >= 0) fds[count++] = {fd, POLLIN, 0};
    }
    if (in.write >= 0) fds[count++] = {in.write, POLLOUT, 0};
    if (count == 0) {
      ::usleep(20000);
      continue;
    }
    if (::poll(fds, count, 50) <= 0) continue;
    for (int i = 0; i < count; ++i) {
      if (fds[i].revents == 0) continue;
      if (fds[i].fd == in.write) {
        const ssize_t n = ::write(in.write, request.input.data() + written, request.input.size() - written);
        if (n > 0) written += static_cast<std::size_t>(n);
        if (n < 0 && errno != EAGAIN) written = request.input.size();
        if (written >= request.input.size()) Pipe::Close(in.write);
        continue;
      }
      const ssize_t n = ::read(fds[i].fd, buffer, sizeof buffer);
      const bool isOut = fds[i].fd == out.read;
      if (n > 0) {
        (isOut ? outcome.output : outcome.errors).append(buffer, static_cast<std::size_t>(n));
      } else if (n == 0 || errno != EAGAIN) {
        Pipe::Close(isOut ? out.read : err.read);
      }
    }
  }
  if (!exited) ::waitpid(pid, &waitStatus, 0);
  outcome.exitStatus = StatusOf(waitStatus);
  return outcome;
}

}  // namespace marigold
