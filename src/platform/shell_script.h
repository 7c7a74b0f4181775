// The session's before and after scripts are shell scripts. Checking one is `sh -n` on its text;
// running one is `sh -c` with the session's name and folders in its environment. A failure is
// described as a script host would: a number (the exit status), a message (the first line the
// shell wrote to standard error) and the line the shell names, when it names one.
#pragma once

#include <atomic>
#include <optional>
#include <string>

namespace marigold {

struct ScriptProblem {
  int number = 0;
  std::string message;
  int line = 0;  // 0 when the shell names no line
};

// What the script sees of the session: MARIGOLD_SESSION, MARIGOLD_SIDE_A, MARIGOLD_SIDE_B.
struct ScriptSession {
  std::string name, sideA, sideB;
};

struct ScriptRun {
  bool succeeded = false;
  bool stopped = false;  // ended by Stop
  std::optional<ScriptProblem> problem;
  std::string output;  // standard output, then standard error
};

// Checks the text without running it; nothing when it is a valid script.
std::optional<ScriptProblem> CompileShellScript(const std::string& text);
// Runs the text and waits for it; when `keepRunning` turns false its whole process group is ended.
ScriptRun RunShellScript(const std::string& text, const ScriptSession& session,
                         const std::atomic<bool>* keepRunning);

// The problem the shell's standard error and exit status describe ("sh: 3: Syntax error: ...",
// "sh: line 3: ..." give line 3).
ScriptProblem DescribeShellFailure(int exitStatus, const std::string& errors);

}  // namespace marigold
