// The commands that run: "run" performs sessions of a document, "sync" a folder pair given on the
// command line. Both run unattended unless asked to be interactive, print a short summary, and
// exit 0 when the run counted no error, 1 when it counted errors (or was stopped), 2 when it
// could not start (usage, an unreadable document, folders that cannot be run). An interactive
// run first asks "Are you sure ...? [y/N]" when the preference prefAskConfirmation is on; a
// "no" does nothing and exits 0.
#pragma once

#include <CLI/CLI.hpp>

#include <string>
#include <vector>

#include "app/main_app.h"

namespace marigold {

struct RunCommandArgs {
  CLI::App* run = nullptr;
  CLI::App* sync = nullptr;

  // run
  std::string document;
  std::string sessionName;
  std::int64_t sessionIndex = -1;
  bool allSessions = false;
  CLI::Option* sessionNameOption = nullptr;
  CLI::Option* sessionIndexOption = nullptr;
  // sync
  std::string source;
  std::string dest;
  bool backup = false;
  bool exact = false;
  std::vector<std::string> settings;  // KEY=VALUE
  // both
  bool interactive = false;
  bool unattended = false;
  bool dryRun = false;

  // One of the two commands was given.
  bool Chosen() const { return (run && run->parsed()) || (sync && sync->parsed()); }
};

// Registers "run" and "sync" on `app`; their values land in `args` when the line is parsed.
void AddRunCommands(CLI::App& app, RunCommandArgs& args);
// Carries out the chosen command after the application has launched. Returns the exit status.
int ExecuteRunCommand(MainApp& app, const RunCommandArgs& args);

}  // namespace marigold
