// Runs the real marigold program for the run commands: a throwaway home (HOME and the XDG
// folders in a temporary folder), text for standard input, and the exit status and both outputs
// captured.
#pragma once

#include <string>
#include <vector>

#include "support/temp_folder.h"

namespace marigold::cli_run_test {

struct CliResult {
  int status = -1;  // exit status; 128 + signal when killed
  std::string out;
  std::string err;
};

class CliSandbox {
 public:
  CliSandbox();

  std::string Path(const std::string& relative) const { return mTemp.Join(relative); }
  std::string PreferencesFile() const { return Path("config/com.quillon.Marigold.plist"); }
  // Runs marigold with `args`, `input` on its standard input.
  CliResult Run(const std::vector<std::string>& args, const std::string& input = "") const;

 private:
  TempFolder mTemp;
};

std::string ReadBytes(const std::string& path);

}  // namespace marigold::cli_run_test
