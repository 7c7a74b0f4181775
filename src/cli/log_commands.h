// The commands about logs and the log's preferences: "log" prints a saved log (the newest when no
// file is named), only its errors, or the list of saved logs; "prefs set" changes preferences
// with the preferences panel's checks; "prefs mail" sets the mail account or sends its test
// message. The account's password is read from standard input (without echo on a terminal),
// never from the command line, which other users can read.
#pragma once

#include <CLI/CLI.hpp>

#include <string>
#include <vector>

#include "app/main_app.h"

namespace marigold {

struct LogCommandArgs {
  CLI::App* log = nullptr;
  std::string file;
  bool errors = false;
  bool list = false;

  CLI::App* prefsSet = nullptr;
  std::vector<std::string> assignments;  // KEY=VALUE

  CLI::App* prefsMail = nullptr;
  std::string to, from, account, smtp, port, tls;
  bool test = false;

  bool Chosen() const {
    return (log && log->parsed()) || (prefsSet && prefsSet->parsed()) || (prefsMail && prefsMail->parsed());
  }
};

// Registers "log" on `app` and "set" and "mail" on its `prefs` command.
void AddLogCommands(CLI::App& app, CLI::App& prefs, LogCommandArgs& args);
// Carries out the chosen command after the application has launched. Returns the exit status.
int ExecuteLogCommand(MainApp& app, const LogCommandArgs& args);

}  // namespace marigold
