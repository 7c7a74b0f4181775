#include "run_cli.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>

extern char** environ;

namespace marigold::cli_run_test {

CliSandbox::CliSandbox() { std::filesystem::create_directories(Path("home")); }

std::string ReadBytes(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

CliResult CliSandbox::Run(const std::vector<std::string>& args, const std::string& input) const {
  std::map<std::string, std::string> env;
  for (char** entry = environ; *entry; ++entry) {
    const std::string text = *entry;
    if (const auto equal = text.find('='); equal != std::string::npos) env[text.substr(0, equal)] = text.substr(equal + 1);
  }
  env["HOME"] = Path("home");
  env["XDG_CONFIG_HOME"] = Path("config");
  env["XDG_DATA_HOME"] = Path("data");
  env["LC_ALL"] = "C.UTF-8";
  env.erase("LANGUAGE");
  std::vector<std::string> envText;
  for (const auto& [name, value] : env) envText.push_back(name + "=" + value);
  std::vector<char*> envp;
  for (std::string& text : envText) envp.push_back(text.data());
  envp.push_back(nullptr);

  std::vector<std::string> argText{MARIGOLD_CLI_PATH};
  argText.insert(argText.end(), args.begin(), args.end());
  std::vector<char*> argv;
  for (std::string& text : argText) argv.push_back(text.data());
  argv.push_back(nullptr);

  const std::string inPath = Path(".stdin");
  const std::string outPath = Path(".stdout");
  const std::string errPath = Path(".stderr");
  std::ofstream(inPath, std::ios::binary) << input;
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, inPath.c_str(), O_RDONLY, 0);
  posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, outPath.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
  posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, errPath.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
  CliResult result;
  pid_t pid = 0;
  if (posix_spawn(&pid, argv[0], &actions, nullptr, argv.data(), envp.data()) == 0) {
    int status = 0;
    ::waitpid(pid, &status, 0);
    result.status = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
  }
  posix_spawn_file_actions_destroy(&actions);
  result.out = ReadBytes(outPath);
  result.err = ReadBytes(errPath);
  return result;
}

}  // namespace marigold::cli_run_test
