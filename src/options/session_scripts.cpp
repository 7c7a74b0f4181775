#include "options/session_scripts.h"

#include "model/document_model.h"
#include "util/strings_table.h"

namespace marigold {
namespace {

const char* CompileFailureKey(int which) {
  return which == 1 ? "Error compiling the first AppleScript." : "Error compiling the second AppleScript.";
}

// The first `marker` of `pattern` replaced by `value`.
std::string Fill(std::string pattern, std::string_view marker, const std::string& value) {
  if (const std::size_t at = pattern.find(marker); at != std::string::npos) pattern.replace(at, marker.size(), value);
  return pattern;
}

}  // namespace

std::optional<std::string> ActiveScriptText(const PlistDict& appleScriptDict, int which) {
  const bool before = which == 1;
  if (appleScriptDict.GetInt(before ? "asStartOn" : "asEndOn") != 1) return std::nullopt;
  std::string text = appleScriptDict.GetString(before ? "asStartText" : "asEndText");
  if (text.empty() || text == kDefaultScriptText) return std::nullopt;
  return text;
}

void CompileAppleScripts(const PlistDict& session, std::int64_t sessionIndex, std::vector<ExecutiveScripts>& list,
                         const ScriptErrorReport& report, bool runGoingOn) {
  const PlistDict* scripts = session.GetDict("appleScriptDict");
  if (scripts == nullptr) return;
  ExecutiveScripts entry;
  entry.sessionIndex = sessionIndex;
  for (int which : {1, 2}) {
    std::optional<std::string> text = ActiveScriptText(*scripts, which);
    if (!text) continue;
    if (std::optional<ScriptProblem> problem = CompileShellScript(*text)) {
      report(GLS(CompileFailureKey(which)), *problem);
      if (!runGoingOn) return;
      continue;
    }
    (which == 1 ? entry.before : entry.after) = std::move(*text);
  }
  if (entry.before || entry.after) list.push_back(std::move(entry));
}

std::string AddAppleScriptErrorDescription(const ScriptProblem& problem) {
  std::string text = "\r" + GLS("Error:") + " " + std::to_string(problem.number) + ".\r";
  return text + problem.message;
}

std::string ScriptRunFailureMessage(int which, const std::string& sessionName) {
  const std::string pattern = GLS("Error running the AppleScript %@ the session \"%@\".");
  return Fill(Fill(pattern, "%@", GLS(which == 1 ? "before" : "after")), "%@", sessionName);
}

std::optional<ScriptPanelRefusal> CheckScriptsBeforeStoring(const PlistDict& appleScriptDict) {
  for (int which : {1, 2}) {
    std::optional<std::string> text = ActiveScriptText(appleScriptDict, which);
    if (!text) continue;
    if (std::optional<ScriptProblem> problem = CompileShellScript(*text))
      return ScriptPanelRefusal{GLS(CompileFailureKey(which)) + AddAppleScriptErrorDescription(*problem),
                                problem->line};
  }
  return std::nullopt;
}

}  // namespace marigold
