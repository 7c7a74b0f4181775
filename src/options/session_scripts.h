// The rules of a session's before and after scripts: which texts count, compiling them into the
// run's executive list, and the wording of their errors. Running them is the caller's work.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "platform/shell_script.h"
#include "util/plist_value.h"

namespace marigold {

// The scripts of one session that compiled, kept for the run.
struct ExecutiveScripts {
  std::int64_t sessionIndex = 0;
  std::optional<std::string> before;
  std::optional<std::string> after;
};

// The text of a switched-on script (1 = before, 2 = after) of an `appleScriptDict`, or nothing
// when it is off, empty, or still the placeholder text.
std::optional<std::string> ActiveScriptText(const PlistDict& appleScriptDict, int which);

// Called with the message ("Error compiling the first AppleScript.") and the shell's problem.
using ScriptErrorReport = std::function<void(const std::string& message, const ScriptProblem& problem)>;

// Compiles the session's switched-on scripts and adds an entry to `list` when at least one
// compiled. With no run going on, the first failure ends the work.
void CompileAppleScripts(const PlistDict& session, std::int64_t sessionIndex, std::vector<ExecutiveScripts>& list,
                         const ScriptErrorReport& report, bool runGoingOn);

// "\rError: N.\r" and the shell's message, as the error texts end.
std::string AddAppleScriptErrorDescription(const ScriptProblem& problem);

// "Error running the AppleScript before the session \"NAME\"." (which 1) or "after" (which 2).
std::string ScriptRunFailureMessage(int which, const std::string& sessionName);

// What the script panel says when it is left with a script that does not compile: the alert
// text and the line to select (0: none). Nothing when both scripts may be stored.
struct ScriptPanelRefusal {
  std::string message;
  int line = 0;
};
std::optional<ScriptPanelRefusal> CheckScriptsBeforeStoring(const PlistDict& appleScriptDict);

}  // namespace marigold
