#include "app/startup.h"

#include <sys/stat.h>
#include <syslog.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>

#include "app/support_folders.h"
#include "app/system_version.h"
#include "util/quillon_additions.h"
#include "util/strings_table.h"
#include "build_paths.h"

namespace marigold {
namespace {

StartupResult Stop(StartupResult result, SystemLog& log, const std::string& title, const std::string& message) {
  result.ok = false;
  result.fatalTitle = title;
  result.fatalMessage = message;
  log.Write(LOG_ERR, message);
  return result;
}

std::string CannotCreateFolderText(const std::string& path) {
  return GLS("Cannot create the folder") + "\r\"" + path + "\".\r" + GLS("Cannot run.") + "\r" +
         GLS("Please be sure that each folder (if existing) on the pathname above has got Read&Write "
             "privileges for the current user.");
}

std::string ProgramName() {
  char buffer[4096];
  ssize_t n = ::readlink("/proc/self/exe", buffer, sizeof buffer - 1);
  if (n <= 0) return kAppName;
  std::string path(buffer, static_cast<std::size_t>(n));
  return path.substr(path.rfind('/') + 1);
}

}  // namespace

LogWords TranslateLogWords() {
  LogWords words;
  words.items = CopyLogWords::Localised();
  words.itemsToDo = GLS("Items to do:") + " %d";
  words.warning = GLS("Warning:");
  return words;
}

std::vector<std::string> DefaultResourceFolders(const std::string& appFolder) {
  std::vector<std::string> folders;
  if (!appFolder.empty()) folders.push_back(JoinPath(appFolder, "../share/marigold"));
  folders.push_back(MARIGOLD_SOURCE_RESOURCES);
  return folders;
}

std::string LaunchLogLine(const std::string& programName, const Identities& ids,
                          const std::string& fullName) {
  char line[1024];
  std::snprintf(line, sizeof line, "%s %s (Build %s) (%dbit) launched by %s uid %d, gid %d - euid %d, egid %d",
                programName.c_str(), kShortVersionString, kBuildVersionString,
                static_cast<int>(sizeof(void*) * 8), fullName.c_str(), static_cast<int>(ids.uid),
                static_cast<int>(ids.gid), static_cast<int>(ids.euid), static_cast<int>(ids.egid));
  return line;
}

std::string TerminalText(std::string text) {
  std::replace(text.begin(), text.end(), '\r', '\n');
  return text;
}

StartupResult InitVariables(const StartupOptions& options) {
  const IdentitySource& identities = options.identities ? *options.identities : SystemIdentities();
  SystemLog& log = options.systemLog ? *options.systemLog : SyslogSystemLog();
  StartupResult result;
  result.identities = identities.Read();
  result.paths = MakeAppPaths("Log Files");
  log.Write(LOG_NOTICE, LaunchLogLine(ProgramName(), result.identities, identities.FullName(result.identities.uid)));

  if (!options.skipSystemCheck && !CheckSystem().ok)
    return Stop(std::move(result), log, GLS("OS X requirements:"), MinimumSystemMessage(kMinimumKernel));

  // The home folder stands where the original platform required "(Home)/Library".
  struct stat st {};
  if (::stat(result.paths.home.c_str(), &st) != 0 || !S_ISDIR(st.st_mode))
    return Stop(std::move(result), log, GLS("Warning:"),
                GLS("Cannot find the folder (Home)/Library.") + "\r" + GLS("Cannot run."));

  if (!PrepareSupportFolder(result.paths, log))
    return Stop(std::move(result), log, GLS("Warning:"), CannotCreateFolderText(result.paths.pathMG4AppSupp));
  // The preferences and the template live in the configuration folder, which a fresh account
  // may not have yet.
  if (!CreateFolderWithIntermediates(result.paths.preferencesFolder, 0700))
    return Stop(std::move(result), log, GLS("Warning:"),
                CannotCreateFolderText(result.paths.preferencesFolder));
  PrepareIndexFolder(result.paths, log);

  std::vector<std::string> folders = options.resourceFolders.empty()
                                         ? DefaultResourceFolders(result.paths.pathAppFolder)
                                         : options.resourceFolders;
  std::vector<std::string> languages =
      options.languages.empty() ? PreferredLanguages() : options.languages;
  if (std::find(languages.begin(), languages.end(), "en") == languages.end()) languages.push_back("en");
  auto table = LoadStringTable(folders, languages, &result.stringTablePath);
  if (!table)
    return Stop(std::move(result), log, GLS("Warning:"),
                GLS("Can't find the file \"Localizable.strings\" inside the application package.") +
                    "\r" + GLS("Please reinstall a new copy of the program."));
  SetStringTable(std::move(*table));

  // Only now can the default log folder carry its localised name.
  result.paths.defaultLogFolder = JoinPath(result.paths.pathMG4AppSupp, GLS("Log Files"));
  result.logWords = TranslateLogWords();
  // The shut-down after a run is "systemctl poweroff": there is no script to compile here.
  result.launchTime = Now();
  result.ok = true;
  return result;
}

}  // namespace marigold
