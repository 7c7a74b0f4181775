// The commands that edit a document: "doc get" and "doc set" read and change values by key path,
// "doc session add|duplicate|rename|remove" do what the session menu does. A refusal (a bad path,
// value, name, or a broken rule) says why on standard error, exits 2 and leaves the file exactly
// as it was; a failed write exits 1.
#pragma once

#include <CLI/CLI.hpp>

#include <optional>
#include <string>
#include <vector>

#include "app/main_app.h"
#include "cli/terminal_prompts.h"

namespace marigold {

struct DocCommandArgs {
  CLI::App* get = nullptr;
  CLI::App* set = nullptr;
  CLI::App* sessionAdd = nullptr;
  CLI::App* sessionDuplicate = nullptr;
  CLI::App* sessionRename = nullptr;
  CLI::App* sessionRemove = nullptr;

  std::string file;
  std::string session;                   // --session NAME of get and set
  CLI::Option* getSessionOption = nullptr;
  CLI::Option* setSessionOption = nullptr;
  std::string keyPath;                   // get
  std::vector<std::string> assignments;  // set: KEYPATH=VALUE
  std::string name;                      // the session a session command acts on
  std::string newName;                   // rename's new name
  std::optional<std::string> addName;    // nothing: the proposed "Session N"
  std::optional<std::string> copyName;   // nothing: the proposed "Copy N of NAME"
  bool allButFirst = false;

  bool Chosen() const;
  // --session was given to get or set.
  bool SessionGiven() const;
};

// Registers get, set and the session commands under the "doc" command.
void AddDocEditCommands(CLI::App* doc, DocCommandArgs& args);
// Carries out the chosen command after the application has launched. Returns the exit status.
int ExecuteDocEditCommand(MainApp& app, TerminalPrompts& prompts, const DocCommandArgs& args);

// The session commands, called by ExecuteDocEditCommand once the document is read.
int DocSessionCommand(MainApp& app, TerminalPrompts& prompts, const DocCommandArgs& args);

}  // namespace marigold
