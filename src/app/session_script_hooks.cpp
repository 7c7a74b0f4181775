#include "app/session_hooks.h"

#include "engine/error_path.h"
#include "engine/run_state.h"
#include "model/document_model.h"
#include "util/strings_table.h"

namespace marigold {

void SessionVolumesAndScripts::GetExecutiveAppleScripts(RunState&, const PlistDict& document,
                                                        std::int64_t sessionIndex) {
  mScripts.clear();
  auto report = [this](const std::string& message, const ScriptProblem& problem) {
    ManageAppleScriptError(message, problem);
  };
  if (IsAllSessions(document, sessionIndex)) {
    for (std::int64_t index = 0; index < SessionCount(document); ++index) {
      if (const PlistDict* session = GetSessionDict(document, index))
        CompileAppleScripts(*session, index, mScripts, report, true);
    }
  } else if (const PlistDict* session = GetSessionDict(document, sessionIndex)) {
    CompileAppleScripts(*session, sessionIndex, mScripts, report, true);
  }
}

void SessionVolumesAndScripts::ExecuteAppleScript(RunState& state, const PlistDict& session, int which) {
  if ((which != 1 && which != 2) || !state.IsRunOn()) return;
  const ExecutiveScripts* entry = nullptr;
  for (const ExecutiveScripts& scripts : mScripts) {
    if (scripts.sessionIndex == state.sessionIndex) entry = &scripts;
  }
  if (entry == nullptr) return;
  const std::optional<std::string>& text = which == 1 ? entry->before : entry->after;
  if (!text) return;
  const PlistDict* console = session.GetDict("consoleDict");
  ScriptSession names;
  if (console != nullptr) {
    names = {console->GetString("sessionName"), console->GetString("topFolder"), console->GetString("bottomFolder")};
  }
  const ScriptRun run = RunShellScript(*text, names, &state.mIsCopying);
  // What the script printed is part of the detailed log, line breaks as the log writes them.
  std::string output = run.output;
  for (char& c : output) {
    if (c == '\n') c = '\r';
  }
  if (!output.empty()) mContext->errors.AppendDetailedLine(output);
  if (run.stopped || run.succeeded) return;
  ManageAppleScriptError(ScriptRunFailureMessage(which, names.name), *run.problem);
}

void SessionVolumesAndScripts::ManageAppleScriptError(const std::string& message, const ScriptProblem& problem) {
  const std::string text = message + AddAppleScriptErrorDescription(problem);
  mContext->errors.RecordItemError({text});
}

}  // namespace marigold
