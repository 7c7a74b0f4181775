// The commands for a session's volumes and scripts: "volumes" lists the mounted volumes with the
// key a row would get, "volumes try" mounts or unmounts one row as the panel's try buttons do,
// and "doc script-check" checks a session's scripts as the script panel does before it stores them.
#pragma once

#include <CLI/CLI.hpp>

#include <cstdint>
#include <string>

#include "app/main_app.h"
#include "cli/terminal_prompts.h"

namespace marigold {

struct VolumeCommandArgs {
  CLI::App* volumes = nullptr;
  CLI::App* tryRow = nullptr;
  CLI::App* scriptCheck = nullptr;
  std::string document;
  std::string session;
  std::int64_t row = 0;  // from 0
  std::string action;    // mount | unmount

  bool Chosen() const { return volumes->parsed() || scriptCheck->parsed(); }
};

void AddVolumeCommands(CLI::App& cli, CLI::App* doc, VolumeCommandArgs& args);
// 0 done; 1 the mount, unmount or a script failed; 2 bad input.
int ExecuteVolumeCommand(MainApp& app, TerminalPrompts& prompts, const VolumeCommandArgs& args);

}  // namespace marigold
