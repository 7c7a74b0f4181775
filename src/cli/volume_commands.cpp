#include "cli/volume_commands.h"

#include <cstdio>

#include "app/session_management.h"
#include "app/startup.h"
#include "cli/commands.h"
#include "model/document_model.h"
#include "options/auto_mount_volumes.h"
#include "options/session_scripts.h"

namespace marigold {
namespace {

int ListVolumes() {
  for (const MountedVolume& volume : SystemVolumeMounter().MountedVolumes()) {
    const VolumeMountInfo info = GetVolumeMountInfoDictionary(volume);
    const std::string key = info.volumeType == kVolumeRemote
                                ? VolumeIdentityKey(info.scheme, info.user, info.host, info.mountPoint)
                                : info.diskID;
    std::printf("%s\t%s\n", key.c_str(), info.mountPoint.c_str());
  }
  return kExitOk;
}

const PlistDict* ChosenSession(PlistDict& document, const std::string& name) {
  std::int64_t index = document.GetInt("sessionIndex");
  if (!name.empty()) {
    const std::optional<std::int64_t> found = FindSessionIndex(document, name);
    index = found.value_or(-1);
  }
  const PlistDict* session = GetSessionDict(document, index);
  if (session == nullptr)
    std::fprintf(stderr, "marigold: %s\n",
                 name.empty() ? "the document has \"All Sessions\" selected: name a session with --session"
                              : ("no session is called \"" + name + "\"").c_str());
  return session;
}

int TryRow(const PlistDict& session, const VolumeCommandArgs& args) {
  const PlistDict* block = session.GetDict("autoMountDict");
  const PlistArray* rows = block != nullptr ? block->GetArray("autoMountVolumeArray") : nullptr;
  const PlistDict* row = rows != nullptr && args.row >= 0 && args.row < static_cast<std::int64_t>(rows->size())
                             ? rows->at(static_cast<std::size_t>(args.row)).AsDict()
                             : nullptr;
  if (row == nullptr) {
    std::fprintf(stderr, "marigold: the session has no volume row %lld\n", static_cast<long long>(args.row));
    return kExitBadInput;
  }
  const VolumeRow volume = VolumeRow::FromDict(*row);
  const std::string message = args.action == "mount" ? TryOneMount(volume, SystemVolumeMounter())
                                                     : TryOneUnmount(volume, SystemVolumeMounter());
  if (message.empty()) return kExitOk;
  std::fprintf(stderr, "%s\n", TerminalText(message).c_str());
  // Finding the volume already there is what was asked for.
  return message == MountResultMessage(kMountAlreadyMounted) ? kExitOk : kExitFailed;
}

int CheckScripts(const PlistDict& session) {
  std::vector<ExecutiveScripts> compiled;
  int failures = 0;
  CompileAppleScripts(session, 0, compiled,
                      [&](const std::string& message, const ScriptProblem& problem) {
                        ++failures;
                        std::printf("%s\n", TerminalText(message + AddAppleScriptErrorDescription(problem)).c_str());
                      },
                      true);
  return failures == 0 ? kExitOk : kExitFailed;
}

}  // namespace

void AddVolumeCommands(CLI::App& cli, CLI::App* doc, VolumeCommandArgs& args) {
  const char* sessionHelp = "The session with this name (default: the document's selected session)";
  args.volumes = cli.add_subcommand("volumes", "List the mounted volumes with the key a volume row gets");
  args.tryRow = args.volumes->add_subcommand("try", "Mount or unmount one volume row of a session");
  args.tryRow->add_option("DOCUMENT", args.document, "The document")->required();
  args.tryRow->add_option("ROW", args.row, "The row's number, from 0")->required();
  args.tryRow->add_option("ACTION", args.action, "mount or unmount")
      ->required()
      ->check(CLI::IsMember({"mount", "unmount"}));
  args.tryRow->add_option("--session", args.session, sessionHelp);
  args.scriptCheck = doc->add_subcommand("script-check", "Check a session's scripts without running them");
  args.scriptCheck->add_option("DOCUMENT", args.document, "The document")->required();
  args.scriptCheck->add_option("--session", args.session, sessionHelp);
}

int ExecuteVolumeCommand(MainApp& app, TerminalPrompts& prompts, const VolumeCommandArgs& args) {
  if (args.volumes->parsed() && !args.tryRow->parsed()) return ListVolumes();
  if (int status = ReadDocumentForCommand(app, prompts, args.document); status != kExitOk) return status;
  const PlistDict* session = ChosenSession(app.store().mainDict(), args.session);
  if (session == nullptr) return kExitBadInput;
  return args.tryRow->parsed() ? TryRow(*session, args) : CheckScripts(*session);
}

}  // namespace marigold
