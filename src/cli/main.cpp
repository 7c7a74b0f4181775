// The command-line front end: start-up as the desktop program does it, then one command.
#include <CLI/CLI.hpp>

#include <cstdio>
#include <string>

#include "app/main_app.h"
#include "app/startup.h"
#include "cli/commands.h"
#include "cli/doc_commands.h"
#include "cli/log_commands.h"
#include "cli/run_commands.h"
#include "cli/terminal_prompts.h"
#include "cli/timer_commands.h"
#include "cli/volume_commands.h"

namespace {

struct Arguments {
  bool reset = false;
  bool force = false;
  std::string file;
};

}  // namespace

int main(int argc, char** argv) {
  using namespace marigold;
  CLI::App cli{"Marigold keeps pairs of folders in step."};
  cli.set_version_flag("--version", std::string(kShortVersionString));
  cli.require_subcommand(0, 1);
  Arguments args;
  cli.add_flag("--reset", args.reset,
               "Reset the preferences to their defaults and the template to a new document");

  CLI::App* doc = cli.add_subcommand("doc", "Work with a session document");
  doc->require_subcommand(1);
  CLI::App* docNew = doc->add_subcommand("new", "Write a new document with the default sessions");
  docNew->add_option("FILE", args.file, "The document to create")->required();
  docNew->add_flag("--force", args.force, "Replace FILE when it exists");
  CLI::App* docShow = doc->add_subcommand("show", "Read a document, upgrade it, print it as XML");
  docShow->add_option("FILE", args.file, "The document to read")->required();
  DocCommandArgs docArgs;
  AddDocEditCommands(doc, docArgs);

  CLI::App* prefs = cli.add_subcommand("prefs", "Work with the preferences");
  prefs->require_subcommand(1);
  CLI::App* prefsShow = prefs->add_subcommand("show", "Print the preferences as XML");

  RunCommandArgs runArgs;
  AddRunCommands(cli, runArgs);
  LogCommandArgs logArgs;
  AddLogCommands(cli, *prefs, logArgs);
  TimerCommandArgs timerArgs;
  AddTimerCommands(cli, timerArgs);
  VolumeCommandArgs volumeArgs;
  AddVolumeCommands(cli, doc, volumeArgs);

  try {
    cli.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    // Help and version are "errors" that exit 0; every real usage error is our 2.
    return cli.exit(error) == 0 ? kExitOk : kExitBadInput;
  }

  TerminalPrompts prompts(IsInteractiveTerminal());
  MainApp app(prompts);
  LaunchOptions options;
  options.reset = args.reset;
  options.writesNothing = runArgs.Chosen() && runArgs.dryRun && !args.reset;
  const StartupResult& started = app.Launch(options);
  if (!started.ok) {
    std::fprintf(stderr, "%s\n%s\n", started.fatalTitle.c_str(), TerminalText(started.fatalMessage).c_str());
    return kExitBadInput;
  }
  if (args.reset && !app.Quit()) {
    std::fprintf(stderr, "marigold: cannot write the reset preferences or template\n");
    return kExitFailed;
  }

  if (*docNew) return DocNew(app, args.file, args.force);
  if (*docShow) return DocShow(app, prompts, args.file);
  if (*prefsShow) return PrefsShow(app);
  if (docArgs.Chosen()) return ExecuteDocEditCommand(app, prompts, docArgs);
  if (runArgs.Chosen()) return ExecuteRunCommand(app, runArgs);
  if (logArgs.Chosen()) return ExecuteLogCommand(app, logArgs);
  if (timerArgs.Chosen()) return ExecuteTimerCommand(app, prompts, timerArgs);
  if (volumeArgs.Chosen()) return ExecuteVolumeCommand(app, prompts, volumeArgs);
  return kExitOk;
}
