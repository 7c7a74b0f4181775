// The command-line commands. Each returns the process exit status: 0 done, 1 the work failed
// (a write), 2 bad input (usage, an unreadable or too new document, a start-up that cannot run).
#pragma once

#include <string>

#include "app/main_app.h"
#include "cli/terminal_prompts.h"

namespace marigold {

inline constexpr int kExitOk = 0;
inline constexpr int kExitFailed = 1;
inline constexpr int kExitBadInput = 2;

// Writes a new document (two default sessions) to `path`. Refuses an existing path unless `force`.
int DocNew(MainApp& app, const std::string& path, bool force);
// Reads `path` into the store's main dictionary and upgrades it; on failure says why on standard
// error (naming the file) and returns kExitBadInput.
int ReadDocumentForCommand(MainApp& app, TerminalPrompts& prompts, const std::string& path);
// Reads `path`, upgrades it, and prints it as an XML property list on standard output.
int DocShow(MainApp& app, TerminalPrompts& prompts, const std::string& path);
// Prints the preferences as an XML property list, the mail account readable with its password
// masked.
int PrefsShow(MainApp& app);

// The preferences as shown: the scrambled account replaced by its content, password masked.
PlistDict PreferencesForDisplay(const PlistDict& prefs);

}  // namespace marigold
