// Session scripts are real `sh` processes: what they report, what they see, and Stop.
#include <gtest/gtest.h>

#include <signal.h>

#include <chrono>
#include <fstream>
#include <thread>

#include "options/session_scripts.h"
#include "support/temp_folder.h"

namespace marigold {
namespace {

struct ScriptCase {
  const char* name;
  const char* text;
  bool compiles;
  bool succeeds;
  int number;       // exit status when it fails
  int line;         // the line the shell names
  const char* said;  // part of the message
};

class Scripts : public ::testing::TestWithParam<ScriptCase> {};

TEST_P(Scripts, CompileAndRun) {
  const ScriptCase& c = GetParam();
  const std::optional<ScriptProblem> compiled = CompileShellScript(c.text);
  EXPECT_EQ(!compiled.has_value(), c.compiles);
  const ScriptRun run = RunShellScript(c.text, {"Daily", "/a", "/b"}, nullptr);
  EXPECT_EQ(run.succeeded, c.succeeds);
  if (c.succeeds) return;
  const ScriptProblem& problem = compiled ? *compiled : *run.problem;
  EXPECT_EQ(run.problem->number, c.number);
  EXPECT_EQ(problem.line, c.line);
  EXPECT_NE(problem.message.find(c.said), std::string::npos) << problem.message;
}

INSTANTIATE_TEST_SUITE_P(
    Shell, Scripts,
    ::testing::Values(
        ScriptCase{"SeesTheSession", "test \"$MARIGOLD_SESSION:$MARIGOLD_SIDE_A:$MARIGOLD_SIDE_B\" = Daily:/a:/b", true,
                   true, 0, 0, ""},
        ScriptCase{"SyntaxErrorNamesItsLine", "echo one\nif true; then\n", false, false, 2, 3, "Syntax error"},
        ScriptCase{"FailingStatusIsTheNumber", "echo going >&2\necho 'no disk' >&2\nexit 7", true, false, 7, 0,
                   "going"},
        ScriptCase{"MissingCommandNamesItsLine", "true\nno-such-command-here", true, false, 127, 2, "not found"}),
    [](const auto& info) { return std::string(info.param.name); });

// Stop ends the script and what it started in the background, at once.
TEST(Scripts, StopEndsTheWholeProcessGroup) {
  TempFolder temp;
  const std::string pidFile = temp.Join("child.pid");
  std::atomic<bool> keepRunning{true};
  std::thread stopper([&] {
    std::this_thread::sleep_for(std::chrono::milliseconds(500));
    keepRunning = false;
  });
  const auto started = std::chrono::steady_clock::now();
  const ScriptRun run =
      RunShellScript("sleep 60 & echo $! > '" + pidFile + "'; wait", {}, &keepRunning);
  stopper.join();
  EXPECT_LT(std::chrono::steady_clock::now() - started, std::chrono::seconds(10));
  EXPECT_TRUE(run.stopped);
  EXPECT_FALSE(run.succeeded);
  pid_t child = 0;
  std::ifstream(pidFile) >> child;
  ASSERT_GT(child, 0);
  std::this_thread::sleep_for(std::chrono::milliseconds(200));
  // Gone, or a zombie waiting for a parent that reaps it.
  std::string stat;
  std::getline(std::ifstream("/proc/" + std::to_string(child) + "/stat"), stat);
  const std::size_t state = stat.rfind(')');
  EXPECT_TRUE(stat.empty() || (state != std::string::npos && stat.compare(state + 2, 1, "Z") == 0))
      << "the background child survived Stop: " << stat;
}

PlistDict ScriptDict(int startOn, const std::string& start, int endOn, const std::string& end) {
  return PlistDict{{"asStartOn", startOn}, {"asStartText", start}, {"asEndOn", endOn}, {"asEndText", end}};
}

TEST(SessionScripts, OnlySwitchedOnScriptsWithTextCompileIntoTheList) {
  struct Case {
    const char* name;
    PlistDict scripts;
    bool entry, before, after;
    int errors;
  };
  const Case cases[] = {
      {"BothGood", ScriptDict(1, "true", 1, "true"), true, true, true, 0},
      {"OffAndPlaceholderIgnored", ScriptDict(0, "true", 1, "-- Write or paste here your AppleScript"), false, false,
       false, 0},
      {"EmptyTextIgnored", ScriptDict(1, "", 0, ""), false, false, false, 0},
      {"OneBadOneGood", ScriptDict(1, "if", 1, "true"), true, false, true, 1},
      {"BothBadNoEntry", ScriptDict(1, "if", 1, "fi"), false, false, false, 2},
  };
  for (const Case& c : cases) {
    std::vector<ExecutiveScripts> list;
    std::vector<std::string> errors;
    CompileAppleScripts(PlistDict{{"appleScriptDict", c.scripts}}, 4, list,
                        [&](const std::string& message, const ScriptProblem&) { errors.push_back(message); }, true);
    EXPECT_EQ(errors.size(), static_cast<std::size_t>(c.errors)) << c.name;
    ASSERT_EQ(list.size(), c.entry ? 1u : 0u) << c.name;
    if (!c.entry) continue;
    EXPECT_EQ(list[0].sessionIndex, 4) << c.name;
    EXPECT_EQ(list[0].before.has_value(), c.before) << c.name;
    EXPECT_EQ(list[0].after.has_value(), c.after) << c.name;
  }
}

TEST(SessionScripts, ThePanelRefusesAScriptThatDoesNotCompileAndNamesTheLine) {
  EXPECT_FALSE(CheckScriptsBeforeStoring(ScriptDict(1, "true", 0, "if")).has_value());
  const auto refusal = CheckScriptsBeforeStoring(ScriptDict(1, "true", 1, "echo\n\nif"));
  ASSERT_TRUE(refusal.has_value());
  EXPECT_EQ(refusal->message.rfind("Error compiling the second AppleScript.\rError: 2.\r", 0), 0u) << refusal->message;
  EXPECT_EQ(refusal->line, 3);
}

}  // namespace
}  // namespace marigold
