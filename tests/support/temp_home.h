// A throwaway home folder for start-up tests: HOME points into it, the XDG variables are cleared
// (or set), and everything is put back and removed afterwards.
#pragma once

#include <sys/stat.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <optional>
#include <string>

#include "support/plist_print.h"
#include "support/tree_values.h"

namespace marigold::testing {

class TempHome {
 public:
  TempHome() {
    std::string pattern = (std::filesystem::temp_directory_path() / "marigold-home-XXXXXX").string();
    mRoot = ::mkdtemp(pattern.data()) ? pattern : std::string();
    std::filesystem::create_directory(home());
    SetEnv("HOME", home());
    SetEnv("XDG_CONFIG_HOME", std::nullopt);
    SetEnv("XDG_DATA_HOME", std::nullopt);
  }
  ~TempHome() {
    for (const auto& [name, value] : mSaved) {
      if (value) ::setenv(name.c_str(), value->c_str(), 1);
      else ::unsetenv(name.c_str());
    }
    std::error_code ignored;
    for (auto it = std::filesystem::recursive_directory_iterator(mRoot, ignored);
         !ignored && it != std::filesystem::recursive_directory_iterator(); it.increment(ignored)) {
      if (!it->is_symlink(ignored)) ::chmod(it->path().c_str(), 0700);
    }
    std::filesystem::remove_all(mRoot, ignored);
  }
  TempHome(const TempHome&) = delete;
  TempHome& operator=(const TempHome&) = delete;

  // Sets (or with nothing, unsets) a variable until the object goes.
  void SetEnv(const std::string& name, const std::optional<std::string>& value) {
    if (!mSaved.count(name)) {
      const char* old = std::getenv(name.c_str());
      mSaved[name] = old ? std::optional<std::string>(old) : std::nullopt;
    }
    if (value) ::setenv(name.c_str(), value->c_str(), 1);
    else ::unsetenv(name.c_str());
  }

  const std::string& root() const { return mRoot; }  // holds the home folder
  std::string home() const { return mRoot + "/home"; }
  std::string Config() const { return home() + "/.config"; }
  std::string Support() const { return home() + "/.local/share/Quillon/Marigold 4"; }
  std::string PreviousSupport() const { return home() + "/.local/share/Quillon/Marigold 3"; }

  // Writes `content` at `path` below the home folder, creating its folders; the full path.
  std::string Write(const std::string& path, const std::string& content) const {
    std::filesystem::path full = std::filesystem::path(home()) / path;
    std::filesystem::create_directories(full.parent_path());
    std::ofstream(full, std::ios::binary) << content;
    return full.string();
  }

 private:
  std::string mRoot;
  std::map<std::string, std::optional<std::string>> mSaved;
};

inline std::optional<std::string> ReadText(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  if (!in) return std::nullopt;
  return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

inline bool Exists(const std::string& path) {
  struct stat st {};
  return ::lstat(path.c_str(), &st) == 0;
}

using trees::ModeOf;

}  // namespace marigold::testing
