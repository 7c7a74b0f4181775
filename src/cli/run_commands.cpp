#include "cli/run_commands.h"

#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>

#include "app/document_edit.h"
#include "model/document_model.h"
#include "app/preferences.h"
#include "app/run_controller.h"
#include "cli/commands.h"
#include "cli/terminal_proxy.h"
#include "engine/tree_text.h"
#include "platform/linux_file_system.h"
#include "util/strings_table.h"

namespace marigold {
namespace {

// The run a signal asks to stop; a Stop is a pair of atomic stores, safe in a handler.
std::atomic<RunController*> gRunningController{nullptr};

extern "C" void StopRunOnSignal(int) {
  if (RunController* controller = gRunningController.load()) controller->Stop();
}

// The first Ctrl-C (or a TERM) stops the run cleanly; the handler then gives way, so a second one
// ends the program at once.
class StopSignals {
 public:
  explicit StopSignals(RunController& controller) {
    gRunningController = &controller;
    struct sigaction action {};
    action.sa_handler = StopRunOnSignal;
    action.sa_flags = SA_RESETHAND;
    sigemptyset(&action.sa_mask);
    ::sigaction(SIGINT, &action, &mOldInt);
    ::sigaction(SIGTERM, &action, &mOldTerm);
  }
  ~StopSignals() {
    ::sigaction(SIGINT, &mOldInt, nullptr);
    ::sigaction(SIGTERM, &mOldTerm, nullptr);
    gRunningController = nullptr;
  }
  StopSignals(const StopSignals&) = delete;
  StopSignals& operator=(const StopSignals&) = delete;

 private:
  struct sigaction mOldInt {};
  struct sigaction mOldTerm {};
};

int Usage(const std::string& message) {
  std::fprintf(stderr, "marigold: %s\n", message.c_str());
  return kExitBadInput;
}

bool Exists(const std::string& path) {
  struct stat st {};
  return !path.empty() && ::lstat(path.c_str(), &st) == 0;
}

// An absolute path without trailing slashes, as the engine joins names onto it.
std::string AbsolutePath(const std::string& path) {
  std::string absolute = path;
  if (!absolute.empty() && absolute.front() != '/') {
    std::string cwd(4096, '\0');
    if (::getcwd(cwd.data(), cwd.size()) != nullptr) absolute = std::string(cwd.c_str()) + "/" + absolute;
  }
  while (absolute.size() > 1 && absolute.back() == '/') absolute.pop_back();
  return absolute;
}

// Sets `value` as `key` typed like `model` (read as `doc set` reads values); false with `error`
// when it does not read as that type.
bool SetTyped(PlistDict& dict, const std::string& key, const PlistValue& model, const std::string& value,
              std::string& error) {
  std::string why;
  std::optional<PlistValue> typed = ParseTypedValue(model.GetType(), value, why);
  if (!typed) {
    error = "\"" + key + "\": " + why;
    return false;
  }
  dict.Set(key, std::move(*typed));
  return true;
}

// Applies one KEY=VALUE to the session's settings or conflict rules, or to the preferences of
// this run only.
bool ApplySetting(const std::string& assignment, PlistDict& session, PlistDict& prefs, const PlistDict& prefDefaults,
                  std::string& error) {
  const auto equals = assignment.find('=');
  if (equals == std::string::npos || equals == 0) {
    error = "--set takes KEY=VALUE, not \"" + assignment + "\"";
    return false;
  }
  const std::string key = assignment.substr(0, equals);
  const std::string value = assignment.substr(equals + 1);
  for (const char* group : {"settingsDict", "conflictsDict"}) {
    PlistDict* dict = session.GetDict(group);
    if (dict == nullptr) continue;
    if (const PlistValue* model = dict->Find(key)) return SetTyped(*dict, key, PlistValue(*model), value, error);
  }
  if (const PlistValue* model = prefDefaults.Find(key)) return SetTyped(prefs, key, *model, value, error);
  error = "no setting, conflict rule or preference is called \"" + key + "\"";
  return false;
}

void PrintSummary(const RunOutcome& outcome) {
  const SideCopyCounters& c = outcome.copyTotals;
  std::printf("%s %lld\n", GLS("Items copied:").c_str(), static_cast<long long>(c.FilesCopied + c.FoldersCreated));
  std::printf("%s %lld\n", GLS("Items replaced:").c_str(), static_cast<long long>(c.FilesReplaced));
  std::printf("%s %lld\n", GLS("Items deleted:").c_str(),
              static_cast<long long>(c.FilesDeleted + c.FoldersDeleted + c.FilesTrashed + c.FoldersTrashed));
  // Conflicts left as they were, so that a run that asked nobody says what it did not do.
  if (outcome.conflictsSkipped > 0)
    std::printf("%s %lld\n", GLS("Conflicts skipped:").c_str(), static_cast<long long>(outcome.conflictsSkipped));
  std::printf("%s %lld\n", GLS("Errors:").c_str(), static_cast<long long>(outcome.errors));
}

struct RunChoice {
  std::int64_t sessionIndex = 0;
  bool interactive = false;
  bool dryRun = false;
};

// Runs through the run controller and prints its outcome; returns the exit status.
int ExecuteRun(const PlistDict& document, const PlistDict& preferences, const AppPaths& paths, const RunChoice& choice) {
  LinuxFileSystem fs;
  TerminalProxy proxy(choice.interactive, ::isatty(STDERR_FILENO) == 1);
  RunController controller(paths, fs, proxy);
  RunRequest request{choice.sessionIndex, choice.interactive ? kExecutedByUser : kExecutedByCommandLine, choice.dryRun};
  RunOutcome outcome;
  {
    StopSignals signals(controller);
    outcome = controller.Run(document, preferences, request);
  }

  switch (outcome.ending) {
    case RunEnding::kCouldNotStart:
      return Usage(outcome.couldNotStartReason);
    case RunEnding::kNotConfirmed:
      // Saying no is not a failure: nothing was done.
      std::printf("%s\n", GLS("Cancelled: nothing was done.").c_str());
      return kExitOk;
    case RunEnding::kPreviewCancelled:
      std::printf("%s\n", GLS("Cancelled: nothing was copied.").c_str());
      return kExitOk;
    case RunEnding::kCompleted:
    case RunEnding::kStopped:
    case RunEnding::kScanFailed:
      break;
  }
  if (choice.dryRun) {
    for (const TaskTree& tree : outcome.dryRunTrees) std::fputs(DescribeTaskTree(tree).c_str(), stdout);
    if (outcome.dryRunTrees.empty() && outcome.ending != RunEnding::kScanFailed)
      std::printf("%s\n", GLS("Nothing to do.").c_str());
  } else {
    PrintSummary(outcome);
    if (!outcome.logFilePath.empty()) std::printf("%s %s\n", GLS("Log file:").c_str(), outcome.logFilePath.c_str());
  }
  if (outcome.Stopped()) std::printf("%s\n", GLS("Stopped.").c_str());
  std::fflush(stdout);
  if (outcome.poweringOff) std::fprintf(stderr, "marigold: the computer is shutting down, as the preferences ask\n");
  if (outcome.ending == RunEnding::kScanFailed) {
    std::fprintf(stderr, "marigold: the run could not start: its folders could not be scanned\n");
    return kExitBadInput;
  }
  return outcome.errors > 0 || outcome.Stopped() ? kExitFailed : kExitOk;
}

// The reason a document path cannot be read, or "" when it looks readable.
std::string DocumentProblem(const std::string& path) {
  struct stat st {};
  if (::stat(path.c_str(), &st) != 0) return std::strerror(errno);
  if (S_ISDIR(st.st_mode)) return "it is a folder";
  return "";
}

int RunDocument(MainApp& app, const RunCommandArgs& args) {
  if (std::string problem = DocumentProblem(args.document); !problem.empty()) {
    return Usage("cannot read \"" + args.document + "\": " + problem);
  }
  DocumentStore& store = app.store();
  if (!store.ReadDocumentFile(args.document)) {
    return Usage("cannot read \"" + args.document + "\": it is not a Marigold document that this version can read");
  }
  PlistDict& document = store.mainDict();
  const std::int64_t count = SessionCount(document);
  if (count == 0) return Usage("\"" + args.document + "\" has no session");

  std::int64_t index = document.GetInt("sessionIndex");
  if (args.allSessions) {
    index = count + 1;
  } else if (args.sessionIndexOption && args.sessionIndexOption->count() > 0) {
    index = args.sessionIndex;
    if (index < 0 || index >= count) {
      return Usage("--index " + std::to_string(index) + " is not a session: the document has " + std::to_string(count));
    }
  } else if (args.sessionNameOption && args.sessionNameOption->count() > 0) {
    index = -1;
    for (std::int64_t i = 0; i < count && index < 0; ++i) {
      const PlistDict* console = GetSessionDict(document, i)->GetDict("consoleDict");
      if (console && console->GetString("sessionName") == args.sessionName) index = i;
    }
    if (index < 0) return Usage("no session is called \"" + args.sessionName + "\"");
  } else if (!IsAllSessions(document, index) && (index < 0 || index >= count)) {
    index = 0;
  }
  return ExecuteRun(document, app.preferences().dict(), app.paths(), {index, args.interactive, args.dryRun});
}

int RunPair(MainApp& app, const RunCommandArgs& args) {
  const std::string source = AbsolutePath(args.source);
  const std::string dest = AbsolutePath(args.dest);
  if (!Exists(source) && !Exists(dest)) {
    return Usage("neither \"" + args.source + "\" nor \"" + args.dest + "\" exists");
  }
  // A folder given a destination that does not exist yet goes into a new folder of that name,
  // as with cp or rsync; a dry run only says what would go there.
  struct stat st {};
  if (!args.dryRun && !Exists(dest) && ::stat(source.c_str(), &st) == 0 && S_ISDIR(st.st_mode)) {
    std::error_code error;
    std::filesystem::create_directories(dest, error);
    if (error) return Usage("cannot create \"" + args.dest + "\": " + error.message());
  }
  const PlistDict model = NewTemplate();
  PlistDict session = *GetSessionDict(model, args.backup ? 1 : 0);
  session.GetDict("consoleDict")->Set("topFolder", source);
  session.GetDict("consoleDict")->Set("bottomFolder", dest);
  if (args.exact) session.GetDict("settingsDict")->Set("settExact", 1);

  // The preferences of this run only: the file is never written from here.
  PlistDict prefs = app.preferences().dict();
  const PlistDict prefDefaults = GetDefaultPreferencesDict(app.paths().defaultLogFolder, app.identities().isRoot);
  for (const std::string& assignment : args.settings) {
    std::string error;
    if (!ApplySetting(assignment, session, prefs, prefDefaults, error)) return Usage(error);
  }
  PlistDict document{{"sessionsArray", PlistArray{session}}, {"fileVersion", kFileVersion}, {"sessionIndex", 0}};
  return ExecuteRun(document, prefs, app.paths(), {0, args.interactive, args.dryRun});
}

void AddRunModeOptions(CLI::App* command, RunCommandArgs& args) {
  CLI::Option* interactive =
      command->add_flag("--interactive", args.interactive, "Ask on the terminal: conflicts, errors, the preview");
  CLI::Option* unattended =
      command->add_flag("--unattended", args.unattended, "Ask nothing: conflicts are skipped, errors go on (default)");
  interactive->excludes(unattended);
  command->add_flag("--dry-run", args.dryRun, "Scan and print what would be done; change nothing");
}

}  // namespace

void AddRunCommands(CLI::App& app, RunCommandArgs& args) {
  args.run = app.add_subcommand("run", "Run sessions of a document");
  args.run->add_option("DOCUMENT", args.document, "The session document")->required();
  args.sessionNameOption = args.run->add_option("--session", args.sessionName, "The session with this name");
  args.sessionIndexOption =
      args.run->add_option("--index", args.sessionIndex, "The session at index N (0 is the first, as in sessionIndex)");
  CLI::Option* all = args.run->add_flag("--all", args.allSessions, "Every session of the document, in order");
  args.sessionNameOption->excludes(args.sessionIndexOption);
  args.sessionNameOption->excludes(all);
  args.sessionIndexOption->excludes(all);
  AddRunModeOptions(args.run, args);

  args.sync = app.add_subcommand("sync", "Synchronise (or back up) one folder pair");
  args.sync->add_option("SOURCE", args.source, "Side A: the source folder or file")->required();
  args.sync->add_option("DEST", args.dest, "Side B: the destination folder or file")->required();
  args.sync->add_flag("--backup", args.backup, "Back up from SOURCE to DEST instead of synchronising both ways");
  args.sync->add_flag("--exact", args.exact, "Also carry deletions across");
  args.sync
      ->add_option("--set", args.settings,
                   "KEY=VALUE: a task setting, conflict rule or preference for this run only (repeatable)")
      ->allow_extra_args(false);
  AddRunModeOptions(args.sync, args);
}

int ExecuteRunCommand(MainApp& app, const RunCommandArgs& args) {
  if (args.run && args.run->parsed()) return RunDocument(app, args);
  if (args.sync && args.sync->parsed()) return RunPair(app, args);
  return Usage("no run command was given");
}

}  // namespace marigold
