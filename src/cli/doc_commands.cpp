#include "cli/doc_commands.h"

#include <glib.h>

#include <cstdio>
#include <iostream>
#include <memory>

#include "app/document_edit.h"
#include "model/document_model.h"
#include "app/session_management.h"
#include "cli/commands.h"
#include "cli/doc_checks.h"
#include "platform/clock.h"
#include "scheduling/timer_editor.h"
#include "util/well_scramble.h"

namespace marigold {
namespace {

int Refuse(const std::string& message) {
  std::fprintf(stderr, "marigold: %s\n", message.c_str());
  return kExitBadInput;
}

// The session get and set act on: --session NAME, else the document's selected one.
std::optional<std::int64_t> ChosenSession(PlistDict& document, const DocCommandArgs& args, std::string& error) {
  if (args.SessionGiven()) {
    const std::optional<std::int64_t> index = FindSessionIndex(document, args.session);
    if (index && GetSessionDict(document, *index) != nullptr) return index;
    error = "no session is called \"" + args.session + "\"";
    return std::nullopt;
  }
  const std::int64_t index = document.GetInt("sessionIndex");
  if (GetSessionDict(document, index) != nullptr) return index;
  error = "the document has \"All Sessions\" selected: name a session with --session";
  return std::nullopt;
}

// Timer rows go through the row editor's checks, which alone mark a row valid; the master box
// follows the panel's rule on leaving.
std::optional<std::string> ConfirmEditedTimers(const PlistDict& before, PlistDict& edited) {
  const ZonedCalendar calendar(SystemClock().TimeZoneName());
  for (std::int64_t i = 0; i < SessionCount(edited); ++i) {
    PlistDict* session = GetSessionDict(edited, i);
    PlistDict* timers = session ? session->GetDict("timerDict") : nullptr;
    const PlistDict* oldSession = GetSessionDict(before, i);
    const PlistDict* old = oldSession ? oldSession->GetDict("timerDict") : nullptr;
    if (timers == nullptr || (old != nullptr && *old == *timers)) continue;
    if (auto problem = ConfirmEditedTimerRows(old, *timers, calendar)) {
      return "\"" + SessionNameOf(PlistValue(*session)) + "\": " + *problem;
    }
  }
  return std::nullopt;
}

int DocGet(MainApp& app, const DocCommandArgs& args) {
  PlistDict& document = app.store().mainDict();
  const bool wholeSession = args.keyPath.empty();
  std::string error;
  std::optional<std::int64_t> index;
  if (wholeSession || !IsDocumentKeyPath(args.keyPath) || args.SessionGiven()) {
    index = ChosenSession(document, args, error);
    if (!index) return Refuse(error);
  }
  const PlistDict& base = IsDocumentKeyPath(args.keyPath) ? document : *GetSessionDict(document, *index);
  if (wholeSession) {
    std::cout << ValueText(PlistValue(base));
  } else {
    const PlistValue* value = FindKeyPath(base, args.keyPath, error);
    if (value == nullptr) return Refuse(error);
    const std::string text = ValueText(*value);
    std::cout << text;
    if (!value->IsArray() && !value->IsDict()) std::cout << '\n';
  }
  std::cout.flush();
  return std::cout ? kExitOk : kExitFailed;
}

int DocSet(MainApp& app, const DocCommandArgs& args) {
  DocumentStore& store = app.store();
  const PlistDict& before = store.mainDict();
  PlistDict edited = before;
  std::string error;
  std::int64_t index = -1;
  bool needsSession = args.SessionGiven();
  for (const std::string& assignment : args.assignments) {
    std::string_view keyPath;
    std::string_view text;
    if (!SplitAssignment(assignment, keyPath, text, error)) return Refuse(error);
    needsSession = needsSession || !IsDocumentKeyPath(keyPath);
  }
  if (needsSession) {
    const std::optional<std::int64_t> chosen = ChosenSession(edited, args, error);
    if (!chosen) return Refuse(error);
    index = *chosen;
  }
  for (const std::string& given : args.assignments) {
    std::string assignment = given;
    // A password never goes on a command line, where every user could read it: "-" reads it
    // from standard input, and it is stored scrambled.
    if (given.ends_with(".password=-")) {
      std::string password;
      std::getline(std::cin, password);
      if (!password.empty() && password.back() == '\r') password.pop_back();
      const PlistData scrambled = SetWellData(password);
      std::unique_ptr<gchar, decltype(&g_free)> text(g_base64_encode(scrambled.data(), scrambled.size()), &g_free);
      assignment = given.substr(0, given.size() - 1) + text.get();
    }
    if (!ApplyAssignment(edited, index, assignment, error)) return Refuse(error);
  }
  if (std::optional<std::string> problem = ConfirmEditedTimers(before, edited)) return Refuse(*problem);
  if (std::optional<std::string> problem = CheckEditedDocument(before, edited, DocSessionChecks())) {
    return Refuse(*problem);
  }
  store.SetMainDict(std::move(edited));
  // The store's alert has said why when the write fails.
  return store.WriteFileSession(args.file) ? kExitOk : kExitFailed;
}

}  // namespace

bool DocCommandArgs::Chosen() const {
  for (const CLI::App* command : {get, set, sessionAdd, sessionDuplicate, sessionRename, sessionRemove}) {
    if (command != nullptr && command->parsed()) return true;
  }
  return false;
}

bool DocCommandArgs::SessionGiven() const {
  return (getSessionOption != nullptr && getSessionOption->count() > 0) ||
         (setSessionOption != nullptr && setSessionOption->count() > 0);
}

void AddDocEditCommands(CLI::App* doc, DocCommandArgs& args) {
  const char* sessionHelp = "The session with this name (default: the document's selected session)";
  args.get = doc->add_subcommand("get", "Print a value of a session (or of the document) by key path");
  args.get->add_option("FILE", args.file, "The document")->required();
  args.get->add_option("KEYPATH", args.keyPath, "Keys and row numbers joined by dots; none prints the whole session");
  args.getSessionOption = args.get->add_option("--session", args.session, sessionHelp);

  args.set = doc->add_subcommand("set", "Change values of a session (or of the document) and save it");
  args.set->add_option("FILE", args.file, "The document")->required();
  args.set->add_option("ASSIGNMENT", args.assignments, "KEYPATH=VALUE, one or more")->required();
  args.setSessionOption = args.set->add_option("--session", args.session, sessionHelp);

  CLI::App* session = doc->add_subcommand("session", "Add, duplicate, rename or remove sessions");
  session->require_subcommand(1);
  args.sessionAdd = session->add_subcommand("add", "Append a new synchronisation session and select it");
  args.sessionAdd->add_option("FILE", args.file, "The document")->required();
  args.sessionAdd->add_option("NAME", args.addName, "Its name (default: \"Session N\")");
  args.sessionDuplicate = session->add_subcommand("duplicate", "Append a copy of a session and select it");
  args.sessionDuplicate->add_option("FILE", args.file, "The document")->required();
  args.sessionDuplicate->add_option("NAME", args.name, "The session to copy")->required();
  args.sessionDuplicate->add_option("NEWNAME", args.copyName, "The copy's name (default: \"Copy N of NAME\")");
  args.sessionRename = session->add_subcommand("rename", "Rename a session and select it");
  args.sessionRename->add_option("FILE", args.file, "The document")->required();
  args.sessionRename->add_option("NAME", args.name, "The session to rename")->required();
  args.sessionRename->add_option("NEWNAME", args.newName, "Its new name")->required();
  args.sessionRemove = session->add_subcommand("remove", "Remove a session, or every session but the first");
  args.sessionRemove->add_option("FILE", args.file, "The document")->required();
  CLI::Option* removeName = args.sessionRemove->add_option("NAME", args.name, "The session to remove");
  CLI::Option* allButFirst =
      args.sessionRemove->add_flag("--all-but-first", args.allButFirst, "Remove every session but the first");
  removeName->excludes(allButFirst);
}

int ExecuteDocEditCommand(MainApp& app, TerminalPrompts& prompts, const DocCommandArgs& args) {
  if (args.sessionRemove->parsed() && args.name.empty() && !args.allButFirst) {
    return Refuse("doc session remove needs the NAME of a session, or --all-but-first");
  }
  if (int status = ReadDocumentForCommand(app, prompts, args.file); status != kExitOk) return status;
  if (args.get->parsed()) return DocGet(app, args);
  if (args.set->parsed()) return DocSet(app, args);
  return DocSessionCommand(app, prompts, args);
}

}  // namespace marigold
