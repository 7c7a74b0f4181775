// The timer commands: "plan" prints what a document's timers will run over the next days, as the
// scheduling list shows it; "daemon" fires the timers with no window open, until SIGTERM.
// Exit status: 0 done, 1 failed, 2 bad input (or, for the daemon, another scheduler holds the lock).
#pragma once

#include <CLI/CLI.hpp>

#include <string>

#include "app/main_app.h"
#include "cli/terminal_prompts.h"

namespace marigold {

struct TimerCommandArgs {
  CLI::App* plan = nullptr;
  CLI::App* daemon = nullptr;

  std::string document;  // plan: required; daemon: "" is the template document
  int days = 1;
  std::string sessionName;
  CLI::Option* sessionOption = nullptr;
  bool allSessions = false;
  bool verbose = false;  // daemon: also write what it does to standard error

  bool Chosen() const { return (plan && plan->parsed()) || (daemon && daemon->parsed()); }
};

// Registers "plan" and "daemon" on `app`.
void AddTimerCommands(CLI::App& app, TimerCommandArgs& args);
// Carries out the chosen command after the application has launched. Returns the exit status.
int ExecuteTimerCommand(MainApp& app, TerminalPrompts& prompts, const TimerCommandArgs& args);

}  // namespace marigold
