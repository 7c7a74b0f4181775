#include <gtest/gtest.h>
#include <fcntl.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <ctime>
#include <filesystem>
#include <thread>

#include "support/cli_runner.h"
#include "util/quillon_additions.h"
#include "build_paths.h"

namespace marigold {
namespace {

using cli_testing::CliHome;
using cli_testing::ReadFileText;
using namespace std::chrono_literals;

// `marigold daemon` as a child process whose standard error is kept in a file.
class DaemonProcess {
 public:
  DaemonProcess(const CliHome& home, const std::string& document) : mErr(home.Path("daemon.err")) {
    mPid = ::fork();
    if (mPid == 0) {
      const int err = ::open(mErr.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
      ::dup2(err, STDERR_FILENO);
      ::execl(MARIGOLD_CLI_PATH, "marigold", "daemon", "--verbose", document.c_str(), nullptr);
      ::_exit(127);
    }
  }
  ~DaemonProcess() {
    if (mPid > 0) ::kill(mPid, SIGKILL), ::waitpid(mPid, nullptr, 0);
  }
  std::string Err() const { return ReadFileText(mErr); }
  // Waits (at most `limit`) until standard error holds `text`.
  bool WaitFor(const std::string& text, std::chrono::seconds limit) const {
    for (auto end = std::chrono::steady_clock::now() + limit; std::chrono::steady_clock::now() < end;
         std::this_thread::sleep_for(100ms)) {
      if (Err().find(text) != std::string::npos) return true;
    }
    return false;
  }
  // Sends TERM and returns the exit status, or -1 when it did not end within 20 seconds.
  int Terminate() {
    ::kill(mPid, SIGTERM);
    for (int i = 0; i < 200; ++i, std::this_thread::sleep_for(100ms)) {
      int status = 0;
      if (::waitpid(mPid, &status, WNOHANG) == mPid) {
        mPid = -1;
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
      }
    }
    return -1;
  }
  pid_t pid() const { return mPid; }

 private:
  std::string mErr;
  pid_t mPid = -1;
};

void MakeTree(const std::string& root, int folders, int files) {
  for (int d = 0; d < folders; ++d) {
    std::filesystem::create_directories(root + "/d" + std::to_string(d));
    for (int f = 0; f < files; ++f) cli_testing::WriteFileText(root + "/d" + std::to_string(d) + "/f" + std::to_string(f), "x");
  }
}

// The log file that the daemon's line about `session`'s run names, or "" when it names none.
std::string LogNamed(const std::string& err, const std::string& session) {
  const std::string start = "Timer run of \"" + session + "\" ";
  for (std::size_t line = err.find(start); line != std::string::npos; line = err.find(start, line + 1)) {
    const std::size_t end = std::min(err.find('\n', line), err.size());
    const std::size_t log = err.find(", log: ", line);
    if (log < end) return err.substr(log + 7, end - log - 7);
  }
  return "";
}

std::size_t CountFiles(const std::string& root) {
  std::size_t count = 0;
  for (const auto& item : std::filesystem::recursive_directory_iterator(root)) count += item.is_regular_file() ? 1 : 0;
  return count;
}

// Both sessions have a one-shot timer in the current minute, so the first check finds both due:
// the small pair runs to its end, then the large pair starts and TERM stops it.
TEST(Daemon, FiresDueTimersOneAfterTheOtherHoldsTheLockAndStopsOnTerm) {
  CliHome home;
  home.SetEnv("XDG_RUNTIME_DIR", home.Path("run"));
  std::filesystem::create_directories(home.Path("run"));
  MakeTree(home.Path("small"), 1, 3);
  MakeTree(home.Path("large"), 40, 500);
  for (const char* dest : {"small-copy", "large-copy"}) std::filesystem::create_directories(home.Path(dest));
  const std::string doc = home.Path("timers.mgy");
  ASSERT_EQ(home.Run({"doc", "new", doc}).status, 0);
  ASSERT_EQ(home.Run({"prefs", "set", "prefSaveLogFile=1", "prefSaveLogFileWhen=1"}).status, 0);
  // Far enough from the minute's end that planning still sees the minute as not past.
  while (std::time(nullptr) % 60 > 45) std::this_thread::sleep_for(1s);
  const std::string minute = IsoUtcDateText(PlistDate{TruncateSeconds(Now()).seconds});
  int index = 0;
  for (const char* pair : {"small", "large"}) {
    const std::string session = index == 0 ? "Default Sync Session" : "Default Backup Session";
    ASSERT_EQ(home.Run({"doc", "set", doc, "--session", session, "consoleDict.topFolder=" + home.Path(pair),
                        "consoleDict.bottomFolder=" + home.Path(std::string(pair) + "-copy"), "timerDict.timerOn=1",
                        "timerDict.timerArray.0.start=" + minute, "timerDict.timerArray.0.valid=1"})
                  .status, 0);
    ++index;
  }
  ASSERT_EQ(home.Run({"doc", "set", doc, "sessionIndex=3"}).status, 0);  // "All Sessions"

  DaemonProcess daemon(home, doc);
  ASSERT_TRUE(daemon.WaitFor("Firing the timers", 10s)) << daemon.Err();
  const auto second = home.Run({"daemon", doc});
  EXPECT_EQ(second.status, 2);
  EXPECT_NE(second.err.find("marigold daemon, process " + std::to_string(daemon.pid())), std::string::npos) << second.err;

  ASSERT_TRUE(daemon.WaitFor("Timer run of \"Default Sync Session\" ended, errors: 0", 30s)) << daemon.Err();
  EXPECT_EQ(CountFiles(home.Path("small-copy")), 3u);
  EXPECT_TRUE(std::filesystem::is_regular_file(LogNamed(daemon.Err(), "Default Sync Session"))) << daemon.Err();
  ASSERT_TRUE(daemon.WaitFor("Timer run of \"Default Backup Session\" starts", 20s)) << daemon.Err();
  EXPECT_EQ(daemon.Terminate(), 0);
  EXPECT_NE(daemon.Err().find("Timer run of \"Default Backup Session\" stopped"), std::string::npos) << daemon.Err();
  EXPECT_LT(CountFiles(home.Path("large-copy")), 20000u);
  const std::string stoppedLog = LogNamed(daemon.Err(), "Default Backup Session");
  EXPECT_NE(ReadFileText(stoppedLog).find("user pressed the Stop button."), std::string::npos) << stoppedLog;
}

}  // namespace
}  // namespace marigold
