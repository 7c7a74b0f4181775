// Start-up without windows: identities, the system check, the home and support folders, the
// language table and the log words translated once. Both front ends run it first and, when it
// fails, show its message and exit before anything else happens.
#pragma once

#include <string>
#include <vector>

#include "app/app_paths.h"
#include "platform/identities.h"
#include "platform/system_log.h"
#include "engine/copy_log_lines.h"
#include "util/plist_value.h"

namespace marigold {

inline constexpr const char* kAppName = "Marigold";
inline constexpr const char* kShortVersionString = "5.1.0";
inline constexpr const char* kBuildVersionString = "501000";

// Log words the run log prints for every item, translated once at start-up.
struct LogWords {
  CopyLogWords items;     // the words of the detailed log's item lines
  std::string itemsToDo;  // "Items to do:" followed by " %d"
  std::string warning;    // "Warning:"
};

// Looks up every log word through GLS; call after the language table is installed.
LogWords TranslateLogWords();

struct StartupOptions {
  // Folders searched for "<lang>.lproj/Localizable.strings"; empty means DefaultResourceFolders.
  std::vector<std::string> resourceFolders;
  // Languages in order of preference; empty means PreferredLanguages().
  std::vector<std::string> languages;
  // Skips the kernel check (tests on machines that fail it still exercise the rest).
  bool skipSystemCheck = false;
  // Who runs the program, and where diagnostics go; null means the system's own.
  const IdentitySource* identities = nullptr;
  SystemLog* systemLog = nullptr;
};

struct StartupResult {
  bool ok = false;
  std::string fatalTitle;    // the alert title of a stop ("Warning:" or the requirements title)
  std::string fatalMessage;  // the stop text, lines separated by "\r"; "" when ok
  AppPaths paths;
  Identities identities;
  LogWords logWords;
  std::string stringTablePath;  // the language table that was loaded
  PlistDate launchTime;
};

// `share/marigold` beside the installed program (../share/marigold from its folder), then the
// source tree's resources folder.
std::vector<std::string> DefaultResourceFolders(const std::string& appFolder);

// The launch line for the system log: "<program> <version> (Build <build>) (64bit) launched by
// <full name> uid <uid>, gid <gid> - euid <euid>, egid <egid>".
std::string LaunchLogLine(const std::string& programName, const Identities& ids,
                          const std::string& fullName);

// Runs the start-up steps in order and installs the language table for GLS. Writes only below
// HOME and the XDG folders. Not thread-safe: call once, from the main thread, before any run.
StartupResult InitVariables(const StartupOptions& options = {});

// The message text with its "\r" line breaks turned into "\n", for a terminal.
std::string TerminalText(std::string text);

}  // namespace marigold
