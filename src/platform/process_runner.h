// Runs a helper program (the shell, mount, losetup, cryptsetup) as a child in its own process
// group, feeds it its standard input, and collects what it prints. Secrets such as passwords go
// on standard input, never on the command line, where every user could read them.
#pragma once

#include <atomic>
#include <string>
#include <utility>
#include <vector>

namespace marigold {

struct ProcessRequest {
  std::vector<std::string> argv;  // argv[0] is looked up on PATH
  // Added to (or replacing) the caller's environment.
  std::vector<std::pair<std::string, std::string>> environment;
  std::string input;  // written to standard input, which is then closed
  // When it turns false the whole process group is ended (SIGTERM, then SIGKILL after 2 s).
  const std::atomic<bool>* keepRunning = nullptr;
};

struct ProcessOutcome {
  bool started = false;
  bool stopped = false;     // ended because keepRunning turned false
  int exitStatus = -1;      // the program's exit status, or 128 + the signal that ended it
  std::string output;       // standard output
  std::string errors;       // standard error
  std::string startError;   // why it could not be started
};

// Blocks until the program exits (or was stopped). Output that a program's own background
// children keep writing after it exited is read for one more second at most.
ProcessOutcome RunProcess(const ProcessRequest& request);

}  // namespace marigold
