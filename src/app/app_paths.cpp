#include "app/app_paths.h"

#include <pwd.h>
#include <unistd.h>

#include <cstdlib>
#include <vector>

namespace marigold {
namespace {

std::string EnvOrEmpty(const char* name) {
  const char* value = std::getenv(name);
  return value ? std::string(value) : std::string();
}

std::string HomeFolder() {
  std::string home = EnvOrEmpty("HOME");
  if (!home.empty()) return home;
  // A login without HOME (a cron job, a stripped environment) still has a password entry.
  if (const passwd* entry = ::getpwuid(::getuid()); entry && entry->pw_dir) return entry->pw_dir;
  return "/";
}

// An XDG variable counts only when it holds an absolute path; a relative one is ignored, as the
// base-directory convention asks.
std::string XdgFolder(const char* variable, const std::string& home, const char* fallback) {
  std::string value = EnvOrEmpty(variable);
  if (!value.empty() && value.front() == '/') return value;
  return JoinPath(home, fallback);
}

std::string ExecutableFolder() {
  std::vector<char> buffer(4096);
  for (;;) {
    ssize_t n = ::readlink("/proc/self/exe", buffer.data(), buffer.size());
    if (n < 0) return "";
    if (static_cast<std::size_t>(n) < buffer.size()) {
      std::string path(buffer.data(), static_cast<std::size_t>(n));
      auto slash = path.rfind('/');
      if (slash == std::string::npos) return "";
      return slash == 0 ? "/" : path.substr(0, slash);
    }
    buffer.resize(buffer.size() * 2);
  }
}

}  // namespace

AppPaths MakeAppPaths(const std::string& logFolderName) {
  AppPaths paths;
  paths.home = HomeFolder();
  paths.preferencesFolder = XdgFolder("XDG_CONFIG_HOME", paths.home, ".config");
  paths.makerFolder = JoinPath(XdgFolder("XDG_DATA_HOME", paths.home, ".local/share"), "Quillon");
  paths.pathMG4AppSupp = JoinPath(paths.makerFolder, "Marigold 4");
  paths.previousSupportFolder = JoinPath(paths.makerFolder, "Marigold 3");
  paths.exactSyncIndexFolder = JoinPath(paths.pathMG4AppSupp, "ExactSync Indexes");
  paths.previousIndexFolder = JoinPath(paths.preferencesFolder, "Marigold 3.0 ExactSync Indexes");
  paths.pathFileDocTemplate =
      JoinPath(paths.preferencesFolder, std::string(kAppIdentifier) + ".template.plist");
  paths.previousTemplateFile = JoinPath(paths.preferencesFolder, "Marigold 3.0 Template.plist");
  paths.preferencesFile = JoinPath(paths.preferencesFolder, std::string(kAppIdentifier) + ".plist");
  paths.previousPrefsFile = JoinPath(paths.preferencesFolder, "Marigold 3.0 Prefs.plist");
  paths.olderPrefsFile = JoinPath(paths.preferencesFolder, "Marigold.plist");
  paths.pathAppFolder = ExecutableFolder();
  paths.defaultLogFolder = JoinPath(paths.pathMG4AppSupp, logFolderName);
  return paths;
}

}  // namespace marigold
