// Runs the real marigold program in a throwaway home: HOME, XDG_CONFIG_HOME and XDG_DATA_HOME
// point into a temporary folder while the object lives, and each run's exit status, standard
// output and standard error are captured (in files: a whole document can exceed a pipe).
#pragma once

#include <sys/wait.h>

#include <cstdlib>
#include <string>
#include <vector>

#include "support/temp_home.h"
#include "build_paths.h"

namespace marigold::cli_testing {

inline std::string ReadFileText(const std::string& path) { return testing::ReadText(path).value_or(""); }

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
    SetEnv("XDG_CONFIG_HOME", config());
    SetEnv("XDG_DATA_HOME", data());
    SetEnv("LANGUAGE", "en");  // the English table, whatever the machine's language
  }

  void SetEnv(const std::string& name, const std::string& value) { mHome.SetEnv(name, value); }
  const std::string& root() const { return mHome.root(); }
  std::string home() const { return mHome.home(); }
  std::string config() const { return root() + "/config"; }
  std::string data() const { return root() + "/data"; }
  std::string PreferencesFile() const { return config() + "/com.quillon.Marigold.plist"; }
  std::string TemplateFile() const { return config() + "/com.quillon.Marigold.template.plist"; }
  std::string Path(const std::string& name) const { return root() + "/" + name; }

  // Runs marigold with `args` and `input` on its standard input, in the environment set above.
  CliResult Run(const std::vector<std::string>& args, const std::string& input = "") const {
    auto quote = [](const std::string& text) {
      std::string quoted = "'";
      for (char c : text) quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
      return quoted + "'";
    };
    WriteFileText(Path(".in"), input);
    std::string command = quote(MARIGOLD_CLI_PATH);
    for (const std::string& arg : args) command += " " + quote(arg);
    command += " <" + quote(Path(".in")) + " >" + quote(Path(".out")) + " 2>" + quote(Path(".err"));
    int status = std::system(command.c_str());
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, ReadFileText(Path(".out")), ReadFileText(Path(".err"))};
  }

 private:
  testing::TempHome mHome;
};

}  // namespace marigold::cli_testing
