// The road of a run as every front end takes it: what stops a run before it starts, the
// confirmation, the snapshot the worker reads while a window edits the document, Stop from
// another thread, and the power-off that only a finished run may ask for.
#include <gtest/gtest.h>

#include <functional>

#include "app/run_controller.h"
#include "model/document_model.h"
#include "support/run_harness.h"

namespace marigold::run_test {
namespace {

class CountingPower : public SystemPower {
 public:
  bool PowerOff() override {
    ++calls;
    return true;
  }
  int calls = 0;
};

// A proxy that can act in the middle of a run (when the copy shows its folders) and answers the
// confirmation as told.
class ControllerProxy : public ScriptedProxy {
 public:
  bool ConfirmRun(const std::string& title, const std::string& question) override {
    confirmations.push_back(title + "|" + question);
    return confirmAnswer;
  }
  void ShowMainFolders(const std::string& source, const std::string& dest) override {
    ScriptedProxy::ShowMainFolders(source, dest);
    if (duringCopy) duringCopy();
  }
  std::vector<std::string> confirmations;
  bool confirmAnswer = true;
  std::function<void()> duringCopy;
};

struct ControllerRun {
  RunHarness h;
  ControllerProxy proxy;
  CountingPower power;
  AppPaths paths;
  std::unique_ptr<RunController> controller;

  ControllerRun() {
    paths.exactSyncIndexFolder = h.Path("indexes");
    controller = std::make_unique<RunController>(paths, h.realFs, proxy, power);
  }
  RunOutcome Run(int executedBy = kExecutedByUser, bool dryRun = false) {
    return controller->Run(h.document, h.preferences, {0, executedBy, dryRun});
  }
};

TEST(RunController, RefusesWhatCannotStartAndAsksBeforeAUserRun) {
  ControllerRun r;
  r.h.document = MakeDocument({{r.h.Path("nowhere"), r.h.Path("nothing")}});
  RunOutcome outcome = r.Run();
  EXPECT_EQ(outcome.ending, RunEnding::kCouldNotStart);
  EXPECT_NE(outcome.couldNotStartReason.find("exists"), std::string::npos) << outcome.couldNotStartReason;
  EXPECT_TRUE(r.proxy.confirmations.empty());

  trees::Build(r.h.A(), {{"a.txt", "alpha"}});
  r.h.document = MakeDocument({{r.h.A(), r.h.B()}});
  r.h.preferences.Set("prefAskConfirmation", 1);
  r.proxy.confirmAnswer = false;
  EXPECT_EQ(r.Run().ending, RunEnding::kNotConfirmed);
  ASSERT_EQ(r.proxy.confirmations.size(), 1u);
  EXPECT_EQ(trees::Read(r.h.B()), (trees::Tree{}));

  // Nobody is asked about a timer's run or a dry run.
  r.Run(kExecutedByTimer);
  r.Run(kExecutedByUser, /*dryRun=*/true);
  EXPECT_EQ(r.proxy.confirmations.size(), 1u);
  EXPECT_EQ(trees::Read(r.h.B()), (trees::Tree{{"a.txt", "alpha"}}));
}

TEST(RunController, TheWorkerReadsItsSnapshotWhileTheDocumentIsEdited) {
  ControllerRun r;
  trees::Build(r.h.A(), {{"a.txt", "alpha"}});
  r.h.document = MakeDocument({{r.h.A(), r.h.B()}});
  // A window edits the session in the middle of the copy: the run goes on with what it started.
  r.proxy.duringCopy = [&] {
    GetSessionDict(r.h.document, 0)->GetDict("consoleDict")->Set("bottomFolder", r.h.Path("elsewhere"));
    GetSessionDict(r.h.document, 0)->GetDict("settingsDict")->Set("settTask", 2);
  };
  RunOutcome outcome = r.Run();
  EXPECT_EQ(outcome.ending, RunEnding::kCompleted);
  EXPECT_EQ(outcome.copyTotals.FilesCopied, 1);
  EXPECT_EQ(trees::Read(r.h.B()), (trees::Tree{{"a.txt", "alpha"}}));
}

TEST(RunController, StopFromAnotherThreadEndsTheRunAndNeverPowersOff) {
  ControllerRun r;
  trees::Build(r.h.A(), {{"a.txt", "alpha"}, {"b.txt", "beta"}});
  r.h.document = MakeDocument({{r.h.A(), r.h.B()}});
  r.h.preferences.Set("prefShutDown", 1);
  std::thread stopper;
  r.proxy.duringCopy = [&] { stopper = std::thread([&] { r.controller->Stop(); }); stopper.join(); };
  RunOutcome outcome = r.Run();
  EXPECT_EQ(outcome.ending, RunEnding::kStopped);
  EXPECT_EQ(r.power.calls, 0);
  EXPECT_FALSE(outcome.poweringOff);

  r.proxy.duringCopy = nullptr;
  outcome = r.Run();
  EXPECT_EQ(outcome.ending, RunEnding::kCompleted);
  EXPECT_EQ(outcome.afterRunAction, AfterRunAction::kShutDown);
  EXPECT_EQ(r.power.calls, 1);
  EXPECT_TRUE(outcome.poweringOff);
}

}  // namespace
}  // namespace marigold::run_test
