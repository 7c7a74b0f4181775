// Runs the real marigold program in a throwaway home: HOME, XDG_CONFIG_HOME and XDG_DATA_HOME
// point into a temporary folder while the object lives, and each run's exit status, standard
// output and standard error are captured (in files: a whole document can exceed a pipe).
#pragma once

#include <sys/wait.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace marigold::cli_testing {

inline std::string ReadFileText(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

inline void WriteFileText(const std::string& path, const std::string& text) {
  std::filesystem::create_directories(std::filesystem::path(path).parent_path());
  std::ofstream(path, std::ios::binary) << text;
}

struct CliResult {
  int status = -1;
  std::string out, err;
};

class CliHome {
 public:
  CliHome() {
    std::string pattern = (std::filesystem::temp_directory_path() / "marigold-cli-XXXXXX").string();
    mRoot = ::mkdtemp(pattern.data()) ? pattern : std::string();
    std::filesystem::create_directories(home());
    SetEnv("HOME", home());
    SetEnv("XDG_CONFIG_HOME", config());
    SetEnv("XDG_DATA_HOME", data());
    SetEnv("LANGUAGE", "en");  // the English table, whatever the machine's language
  }
  ~CliHome() {
    for (const auto& [name, value] : mSaved) value ? ::setenv(name.c_str(), value->c_str(), 1) : ::unsetenv(name.c_str());
    std::error_code ignored;
    std::filesystem::remove_all(mRoot, ignored);
  }
  CliHome(const CliHome&) = delete;
  CliHome& operator=(const CliHome&) = delete;

  void SetEnv(const std::string& name, const std::string& value) {
    if (!mSaved.count(name)) {
      const char* old = std::getenv(name.c_str());
      mSaved[name] = old ? std::optional<std::string>(old) : std::nullopt;
    }
    ::setenv(name.c_str(), value.c_str(), 1);
  }

  const std::string& root() const { return mRoot; }
  std::string home() const { return mRoot + "/home"; }
  std::string config() const { return mRoot + "/config"; }
  std::string data() const { return mRoot + "/data"; }
  std::string PreferencesFile() const { return config() + "/com.quillon.Marigold.plist"; }
  std::string TemplateFile() const { return config() + "/com.quillon.Marigold.template.plist"; }
  std::string Path(const std::string& name) const { return mRoot + "/" + name; }

  // Runs marigold with `args` (standard input empty) in the environment set above.
  CliResult Run(const std::vector<std::string>& args) const {
    auto quote = [](const std::string& text) {
      std::string quoted = "'";
      for (char c : text) quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
      return quoted + "'";
    };
    std::string command = quote(MARIGOLD_CLI_PATH);
    for (const std::string& arg : args) command += " " + quote(arg);
    command += " </dev/null >" + quote(mRoot + "/.out") + " 2>" + quote(mRoot + "/.err");
    int status = std::system(command.c_str());
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, ReadFileText(mRoot + "/.out"), ReadFileText(mRoot + "/.err")};
  }

 private:
  std::string mRoot;
  std::map<std::string, std::optional<std::string>> mSaved;
};

}  // namespace marigold::cli_testing
