#include "app/run_controller.h"

#include <sys/stat.h>

#include <algorithm>

#include "engine/are_you_sure.h"
#include "model/document_model.h"
#include "util/strings_table.h"

namespace marigold {
namespace {

bool Exists(const std::string& path) {
  struct stat st {};
  return !path.empty() && ::lstat(path.c_str(), &st) == 0;
}

RunTallyCounts CountsOf(const RunTallies& tallies) {
  return {tallies.runItemsTotal,   tallies.runToCopyAToB,   tallies.runToCopyBToA, tallies.runToDelete,
          tallies.runMetadataAToB, tallies.runMetadataBToA, tallies.runNothing};
}

}  // namespace

RunController::RunController(const AppPaths& paths, FileSystem& fs, AppkitProxy& proxy, SystemPower& power,
                             const RunSeams& seams)
    : mFs(fs),
      mProxy(proxy),
      mPower(power),
      mSeams(seams),
      mServices(paths.exactSyncIndexFolder, paths.defaultLogFolder) {
  mMailSeams.systemLog = seams.systemLog;
}

RunController::~RunController() {
  Stop();
  Wait();
}

std::string RunController::StartProblem(const PlistDict& document, std::int64_t sessionIndex) {
  if (SessionCount(document) == 0) return "the document has no session";
  // Every session of "All Sessions" is checked by its own run; a multiple list by its rows.
  if (IsAllSessions(document, sessionIndex)) return "";
  const PlistDict* session = GetSessionDict(document, sessionIndex);
  if (session == nullptr) return "there is no session at index " + std::to_string(sessionIndex);
  if (session->GetDict("multiDict") && session->GetDict("multiDict")->IsFlagOn("multiOn")) return "";
  const PlistDict* console = session->GetDict("consoleDict");
  const std::string source = console ? console->GetString("topFolder") : "";
  const std::string dest = console ? console->GetString("bottomFolder") : "";
  if (source.empty() || dest.empty()) return "the session has no source or no destination folder";
  if (!Exists(source) && !Exists(dest)) return "neither \"" + source + "\" nor \"" + dest + "\" exists";
  return "";
}

bool RunController::TaskExecuteSyncOrBackup(const PlistDict& document, const PlistDict& preferences,
                                            const RunRequest& request,
                                            std::function<void(RunOutcome)> finished) {
  if (mRunning.load()) {
    Stop();
    return false;
  }
  Wait();  // the worker of the last run has handed over its outcome; join it
  RunOutcome refused;
  if (std::string problem = StartProblem(document, request.sessionIndex); !problem.empty()) {
    refused.ending = RunEnding::kCouldNotStart;
    refused.couldNotStartReason = problem;
    finished(refused);
    return false;
  }
  // A dry run changes nothing, so there is nothing to confirm.
  if (request.executedBy == kExecutedByUser && !request.dryRun && AsksConfirmation(preferences) &&
      !mProxy.ConfirmRun(GLS("Starting task:"), AreYouSureString(document, request.sessionIndex, mFs))) {
    refused.ending = RunEnding::kNotConfirmed;
    finished(refused);
    return false;
  }
  mDocument = document;
  mPreferences = preferences;
  mStopAsked = false;
  mRunning = true;
  mWorker = std::thread(&RunController::Work, this, request, std::move(finished));
  return true;
}

RunOutcome RunController::Run(const PlistDict& document, const PlistDict& preferences, const RunRequest& request) {
  RunOutcome result;
  TaskExecuteSyncOrBackup(document, preferences, request, [&result](RunOutcome outcome) { result = std::move(outcome); });
  Wait();
  return result;
}

void RunController::Stop() {
  // Stop while the log is being mailed interrupts the mail.
  if (mMailing.load()) mMailCancel.store(true);
  mStopAsked.store(true);
  if (RunDriver* driver = mDriver.load()) driver->Stop();
}

void RunController::Wait() {
  if (mWorker.joinable()) mWorker.join();
}

void RunController::Work(RunRequest request, std::function<void(RunOutcome)> finished) {
  RunDriver driver(mDocument, mPreferences, mFs, mProxy, mServices, mSeams);
  driver.SetDryRun(request.dryRun);
  std::atomic<std::int64_t> errorsSeen{0};
  driver.SetErrorObserver([&](const std::string& message) {
    ++errorsSeen;
    mProxy.ReportError(message);
  });
  mServices.runLog().PrepareRun(mDocument, IsAllSessions(mDocument, request.sessionIndex));
  mDriver.store(&driver);
  // A Stop that came before the driver existed still counts.
  if (mStopAsked.load()) driver.Stop();
  driver.ExecuteSyncBackup(request.sessionIndex, request.executedBy);
  mDriver.store(nullptr);

  RunOutcome outcome = Outcome(driver, errorsSeen.load());
  outcome.logText = mServices.runLog().logString();
  outcome.logFilePath = mServices.runLog().pathLogFile();
  MailLog(outcome);
  if (outcome.afterRunAction == AfterRunAction::kShutDown) outcome.poweringOff = mPower.PowerOff();
  mRunning = false;
  // A dry run's trees can hold a million items: handed on, not copied.
  finished(std::move(outcome));
}

void RunController::MailLog(RunOutcome& outcome) {
  // A dry run and a preview cancelled made no log, and so mail none.
  if (outcome.logText.empty()) return;
  MailSeams seams = mMailSeams;
  seams.now = mSeams.clock->Now();
  mMailCancel = false;
  seams.cancel = &mMailCancel;
  mMailing = true;
  outcome.logMailFailed = !SendEmailTo(mPreferences, outcome.logText, outcome.errors, outcome.logFilePath, seams,
                                       [this](const std::string& text) { mProxy.SetTaskComment(text); });
  mMailing = false;
}

RunOutcome RunController::Outcome(RunDriver& driver, std::int64_t errorsSeen) {
  RunState& state = driver.state();
  RunOutcome outcome;
  // An error recorded outside any task (a refused folder pair) reaches no task record.
  outcome.errors = std::max<std::int64_t>(state.gGlobalError, errorsSeen);
  outcome.conflictsSkipped = state.gGlobalConflictsSkipped;
  outcome.itemsScanned = state.gGlobalItemsScanned;
  outcome.copyTotals = driver.copyTotals();
  outcome.tallies = CountsOf(state.tallies);
  outcome.dryRunTrees = std::move(driver.scannedTrees());
  outcome.afterRunAction = driver.afterRunAction();
  if (driver.previewCancelled()) {
    outcome.ending = RunEnding::kPreviewCancelled;
  } else if (state.mUserPressedStop) {
    outcome.ending = RunEnding::kStopped;
  } else if (!driver.scanSucceeded()) {
    outcome.ending = RunEnding::kScanFailed;
  }
  return outcome;
}

}  // namespace marigold
