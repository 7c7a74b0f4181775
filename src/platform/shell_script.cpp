#include "platform/shell_script.h"

#include <cctype>

#include "platform/process_runner.h"

namespace marigold {

ScriptProblem DescribeShellFailure(int exitStatus, const std::string& errors) {
  ScriptProblem problem;
  problem.number = exitStatus;
  const std::size_t start = errors.find_first_not_of("\r\n");
  if (start != std::string::npos) {
    const std::size_t end = errors.find_first_of("\r\n", start);
    problem.message = errors.substr(start, end == std::string::npos ? std::string::npos : end - start);
  }
  // dash says "sh: 3: ...", bash "sh: line 3: ...".
  std::size_t at = problem.message.find(": ");
  if (at == std::string::npos) return problem;
  at += 2;
  if (problem.message.compare(at, 5, "line ") == 0) at += 5;
  int line = 0;
  std::size_t digits = at;
  while (digits < problem.message.size() && std::isdigit(static_cast<unsigned char>(problem.message[digits])) != 0)
    line = line * 10 + (problem.message[digits++] - '0');
  if (digits > at && problem.message.compare(digits, 1, ":") == 0) problem.line = line;
  return problem;
}

std::optional<ScriptProblem> CompileShellScript(const std::string& text) {
  ProcessRequest request;
  request.argv = {"/bin/sh", "-n"};
  request.input = text;
  const ProcessOutcome outcome = RunProcess(request);
  if (!outcome.started) return ScriptProblem{-1, "Cannot start the shell: " + outcome.startError, 0};
  if (outcome.exitStatus == 0) return std::nullopt;
  return DescribeShellFailure(outcome.exitStatus, outcome.errors);
}

ScriptRun RunShellScript(const std::string& text, const ScriptSession& session,
                         const std::atomic<bool>* keepRunning) {
  ProcessRequest request;
  request.argv = {"/bin/sh", "-c", text, "sh"};
  request.environment = {{"MARIGOLD_SESSION", session.name},
                         {"MARIGOLD_SIDE_A", session.sideA},
                         {"MARIGOLD_SIDE_B", session.sideB}};
  request.keepRunning = keepRunning;
  const ProcessOutcome outcome = RunProcess(request);
  ScriptRun run;
  run.output = outcome.output + outcome.errors;
  run.stopped = outcome.stopped;
  if (!outcome.started) {
    run.problem = ScriptProblem{-1, "Cannot start the shell: " + outcome.startError, 0};
    return run;
  }
  run.succeeded = outcome.exitStatus == 0 && !outcome.stopped;
  if (!run.succeeded) run.problem = DescribeShellFailure(outcome.exitStatus, outcome.errors);
  return run;
}

}  // namespace marigold
