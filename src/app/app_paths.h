// Where Marigold keeps its files for the current user, made once at start-up from HOME and the
// XDG variables: preferences and template in the config folder, support data in the data folder.
#pragma once

#include <string>

#include "util/path_join.h"

namespace marigold {

struct AppPaths {
  std::string home;                  // HOME
  std::string preferencesFolder;     // $XDG_CONFIG_HOME, default ~/.config
  std::string makerFolder;           // $XDG_DATA_HOME/Quillon, default ~/.local/share/Quillon
  std::string pathMG4AppSupp;        // makerFolder/"Marigold 4"
  std::string previousSupportFolder; // makerFolder/"Marigold 3"
  std::string exactSyncIndexFolder;  // pathMG4AppSupp/"ExactSync Indexes"
  std::string previousIndexFolder;   // preferencesFolder/"Marigold 3.0 ExactSync Indexes"
  std::string pathFileDocTemplate;   // preferencesFolder/"com.quillon.Marigold.template.plist"
  std::string previousTemplateFile;  // preferencesFolder/"Marigold 3.0 Template.plist"
  std::string preferencesFile;       // preferencesFolder/"com.quillon.Marigold.plist"
  std::string previousPrefsFile;     // preferencesFolder/"Marigold 3.0 Prefs.plist"
  std::string olderPrefsFile;        // preferencesFolder/"Marigold.plist"
  std::string pathAppFolder;         // the folder holding the running executable
  std::string defaultLogFolder;      // pathMG4AppSupp joined with the localised "Log Files"
};

inline constexpr const char* kAppIdentifier = "com.quillon.Marigold";

// Computes every path from the environment (HOME, XDG_CONFIG_HOME, XDG_DATA_HOME). Creates
// nothing. `logFolderName` is the localised "Log Files".
AppPaths MakeAppPaths(const std::string& logFolderName);

}  // namespace marigold
