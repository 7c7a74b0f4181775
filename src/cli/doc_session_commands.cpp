#include <cstdio>

#include "app/app_prompts.h"
#include "app/session_management.h"
#include "cli/commands.h"
#include "cli/doc_commands.h"

namespace marigold {
namespace {

// The session a command names; "All Sessions" names the menu entry, which the commands refuse
// with their own messages.
std::optional<std::int64_t> NamedSession(PlistDict& document, const std::string& name) {
  std::optional<std::int64_t> index = FindSessionIndex(document, name);
  if (!index) std::fprintf(stderr, "marigold: no session is called \"%s\"\n", name.c_str());
  return index;
}

}  // namespace

int DocSessionCommand(MainApp& app, TerminalPrompts& prompts, const DocCommandArgs& args) {
  DocumentStore& store = app.store();
  // Edited aside, so a refusal leaves nothing half done in the store.
  PlistDict document = store.mainDict();
  SessionCommandResult result;
  std::string printedName;
  if (args.sessionAdd->parsed()) {
    printedName = args.addName.value_or(ProposedNewSessionName(document));
    result = NewSession(document, printedName);
  } else if (args.allButFirst) {
    result = RemoveSession(document, 0, true);
  } else {
    const std::optional<std::int64_t> index = NamedSession(document, args.name);
    if (!index) return kExitBadInput;
    if (args.sessionDuplicate->parsed()) {
      printedName = args.copyName.value_or(ProposedDuplicateName(document, *index));
      result = DuplicateSession(document, *index, printedName);
    } else if (args.sessionRename->parsed()) {
      result = RenameSession(document, *index, args.newName);
    } else {
      result = RemoveSession(document, *index, false);
    }
  }
  if (!result.ok) {
    prompts.Alert(WarningAlert(result.refusal));
    return kExitBadInput;
  }
  // Renaming a session to its own name is no change, and the file stays as it is.
  if (!result.changed) return kExitOk;
  store.SetMainDict(std::move(document));
  if (!store.WriteFileSession(args.file)) return kExitFailed;
  // A name the command chose is the only way to learn it.
  if (args.sessionAdd->parsed() || args.sessionDuplicate->parsed()) std::printf("%s\n", printedName.c_str());
  return kExitOk;
}

}  // namespace marigold
