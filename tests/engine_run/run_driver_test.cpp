// Whole runs on real trees: the phases and their order, the records the log reads, several tasks
// and sessions, stopping at each stage, the preview, and the rule that the last task's scan
// decides whether anything is copied.
#include <gtest/gtest.h>

#include <algorithm>

#include "model/document_model.h"
#include "support/fault_file_system.h"
#include "support/run_harness.h"

namespace marigold::run_test {
namespace {

using Strings = std::vector<std::string>;

Strings SortedKeys(const PlistDict& dict) {
  Strings keys = dict.Keys();
  std::sort(keys.begin(), keys.end());
  return keys;
}

bool Contains(const Strings& list, const std::string& item) {
  return std::find(list.begin(), list.end(), item) != list.end();
}

// A multiple-list session of `task` whose two rows copy A1 (one.txt) to B1 and A2 (two.txt) to B2.
void TwoRows(RunHarness& h, int task) {
  trees::Build(h.Path("A1"), {{"one.txt", "1"}});
  trees::Build(h.Path("A2"), {{"two.txt", "2"}});
  trees::Build(h.Path("B1"), {});
  trees::Build(h.Path("B2"), {});
  h.document = MakeDocument({{"", "", task, false, /*multi=*/true}});
  h.services.multiRows[0] = {{h.Path("A1"), h.Path("B1")}, {h.Path("A2"), h.Path("B2")}};
}

TEST(RunDriver, OneTaskRunsThePhasesInOrderAndRecordsTheTask) {
  RunHarness h;
  trees::Build(h.A(), {{"a.txt", "alpha"}, {"sub/", ""}, {"sub/b.txt", "beta"}});
  h.document = MakeDocument({{h.A(), h.B()}});

  RunDriver& run = h.Run();

  EXPECT_TRUE(run.scanSucceeded());
  EXPECT_EQ(trees::Read(h.B()), trees::Read(h.A()));
  EXPECT_EQ(h.services.calls, (Strings{"before s0", "mount s0", "validate s0", "after s0", "unmount s0", "log"}));
  EXPECT_EQ(h.proxy.Events(), (Strings{"started", "folders " + h.A() + " " + h.B(), "ended"}));
  ASSERT_FALSE(h.proxy.ItemsToDo().empty());
  EXPECT_EQ(h.proxy.ItemsToDo().back(), (std::pair<std::int64_t, std::int64_t>{0, 3}));

  ASSERT_EQ(h.Sessions().size(), 1u);
  const PlistDict& session = *h.Sessions()[0].AsDict();
  EXPECT_EQ(SortedKeys(session), (Strings{"gTotError", "logTaskArray", "sessionIndex"}));
  const PlistDict& task = h.Task(0, 0);
  Strings expected{"taskIndex", "gSourceFolder", "gDestFolder", "gAFoldersScanned", "gAFilesScanned",
                   "gBFoldersScanned", "gBFilesScanned", "gTotError", "gItemsToDo", "gConflictsSkipped",
                   "gDetailedLogText", "restoreBackupDateArray"};
  for (const char* side : {"gA", "gB"}) {
    for (const char* counter : {"FoldersCreated", "FilesRenamed", "FilesCopied", "FilesReplaced", "FoldersDeleted",
                                "FilesDeleted", "ItemInvisible", "ItemVisible"}) {
      expected.push_back(std::string(side) + counter);
    }
  }
  std::sort(expected.begin(), expected.end());
  EXPECT_EQ(SortedKeys(task), expected);
  EXPECT_EQ(task.GetString("gSourceFolder"), h.A());
  EXPECT_EQ(task.GetString("gDestFolder"), h.B());
  EXPECT_EQ(task.GetInt("gAFoldersScanned"), 1);
  EXPECT_EQ(task.GetInt("gAFilesScanned"), 2);
  EXPECT_EQ(task.GetInt("gItemsToDo"), 3);
  EXPECT_EQ(task.GetInt("gBFoldersCreated"), 1);
  EXPECT_EQ(task.GetInt("gBFilesCopied"), 2);
  EXPECT_EQ(task.GetInt("gAFilesCopied"), 0);
  EXPECT_EQ(task.GetInt("gTotError"), 0);
  EXPECT_NE(task.GetString("gDetailedLogText").find("Copied file"), std::string::npos);
  EXPECT_EQ(run.copyTotals().FilesCopied, 2);
  EXPECT_EQ(run.state().gGlobalItemsScanned, 3);

  // Both roots remember the run's start as their last run.
  EXPECT_EQ(trees::BackupDate(h.A()), run.state().gStartSyncDateTimeUTC);
  EXPECT_EQ(trees::BackupDate(h.B()), run.state().gStartSyncDateTimeUTC);
  EXPECT_FALSE(run.state().mIsCopying);
}

struct AllSessionsCase {
  const char* name;
  int stopInSession;  // -1: no stop
  std::size_t sessionsLogged;
};

class AllSessions : public ::testing::TestWithParam<AllSessionsCase> {};

TEST_P(AllSessions, StopAfterASessionLeavesTheLaterOnesOut) {
  const AllSessionsCase& c = GetParam();
  RunHarness h;
  std::vector<SessionPlan> sessions;
  for (int i = 0; i < 3; ++i) {
    const std::string n = std::to_string(i);
    trees::Build(h.Path("A" + n), {{"f" + n + ".txt", n}});
    trees::Build(h.Path("B" + n), {});
    sessions.push_back({h.Path("A" + n), h.Path("B" + n)});
  }
  h.document = MakeDocument(sessions);
  h.preferences.Set("prefQuit", 1);
  h.services.onScript = [&](std::int64_t session, int which) {
    if (which == 1 && session == c.stopInSession) h.driver().Stop();
  };

  RunDriver& run = h.Run(SessionCount(h.document) + 1);

  ASSERT_EQ(h.Sessions().size(), c.sessionsLogged);
  for (std::size_t i = 0; i < c.sessionsLogged; ++i) {
    EXPECT_EQ(h.Sessions()[i].AsDict()->GetInt("sessionIndex"), static_cast<std::int64_t>(i));
    EXPECT_TRUE(Contains(h.services.calls, "unmount s" + std::to_string(i)));
  }
  EXPECT_TRUE(Contains(h.services.calls, "log"));
  const bool stopped = c.stopInSession >= 0;
  for (int i = 0; i < 3; ++i) {
    const std::string n = std::to_string(i);
    EXPECT_EQ(trees::Read(h.Path("B" + n)).size(), stopped ? 0u : 1u) << "session " << i;
    EXPECT_EQ(trees::BackupDate(h.Path("A" + n)).has_value(), !stopped) << "session " << i;
  }
  EXPECT_EQ(run.state().mUserPressedStop, stopped);
  EXPECT_EQ(run.afterRunAction(), stopped ? AfterRunAction::kNone : AfterRunAction::kQuit);
}

INSTANTIATE_TEST_SUITE_P(RunDriver, AllSessions,
                         ::testing::Values(AllSessionsCase{"NoStop", -1, 3}, AllSessionsCase{"StopInFirst", 0, 1},
                                           AllSessionsCase{"StopInSecond", 1, 2}),
                         [](const auto& info) { return std::string(info.param.name); });

TEST(RunDriver, StopDuringTheScanCopiesNothingButStillLogsAndUnmounts) {
  RunHarness h;
  trees::Build(h.A(), {{"a.txt", "a"}, {"sub/", ""}, {"sub/b.txt", "b"}, {"z.txt", "z"}});
  h.document = MakeDocument({{h.A(), h.B()}});
  h.preferences.Set("prefShutDown", 1);
  FaultFileSystem fs(h.realFs, {RunBefore(FsOperation::kListFolder, h.A("sub"), [&] { h.driver().Stop(); })});

  RunDriver& run = h.Run(0, kExecutedByUser, &fs);

  EXPECT_TRUE(trees::Read(h.B()).empty());
  EXPECT_EQ(h.services.calls.back(), "log");
  EXPECT_TRUE(Contains(h.services.calls, "unmount s0"));
  EXPECT_FALSE(Contains(h.services.calls, "after s0"));
  EXPECT_FALSE(trees::BackupDate(h.A()).has_value());
  EXPECT_FALSE(trees::BackupDate(h.B()).has_value());
  EXPECT_TRUE(run.state().mUserPressedStop);
  EXPECT_EQ(run.afterRunAction(), AfterRunAction::kNone);
}

TEST(RunDriver, StopDuringTheCopyLeavesOnlyCompleteFilesAndNoDates) {
  RunHarness h;
  trees::Build(h.A(), {{"a.txt", "alpha"}, {"b.txt", std::string(1 << 20, 'b')}, {"c.txt", "gamma"}});
  h.document = MakeDocument({{h.A(), h.B(), 2}});
  FaultFileSystem fs(h.realFs, {RunBefore(FsOperation::kCopyItem, h.A("b.txt"), [&] { h.driver().Stop(); })});

  RunDriver& run = h.Run(0, kExecutedByUser, &fs);

  const trees::Tree copied = trees::Read(h.B());
  const trees::Tree source = trees::Read(h.A());
  EXPECT_EQ(copied.count("a.txt"), 1u);
  EXPECT_EQ(copied.count("c.txt"), 0u);
  for (const auto& [path, content] : copied) EXPECT_EQ(content, source.at(path)) << path;
  EXPECT_TRUE(Contains(h.services.calls, "log"));
  EXPECT_FALSE(trees::BackupDate(h.B()).has_value());
  EXPECT_GT(run.state().tallies.runItemsToDo.load(), 0);
}

TEST(RunDriver, NothingToDoShowsNoPreviewButStillLogs) {
  RunHarness h;
  const trees::Tree same{{"a.txt", "same"}, {"sub/", ""}, {"sub/b.txt", "also"}};
  trees::Build(h.A(), same);
  trees::Build(h.B(), same);
  for (const char* path : {"a.txt", "sub/b.txt"}) {
    trees::SetModified(h.A(path), 1600000000);
    trees::SetModified(h.B(path), 1600000000);
  }
  h.document = MakeDocument({{h.A(), h.B()}});
  h.preferences.Set("prefPreview", 1);

  RunDriver& run = h.Run();

  EXPECT_TRUE(run.scanSucceeded());
  EXPECT_EQ(h.proxy.previews, 0);
  EXPECT_EQ(h.services.calls.back(), "log");
  EXPECT_EQ(h.Task(0, 0).GetInt("gItemsToDo"), 0);
  EXPECT_EQ(run.copyTotals().FilesCopied + run.copyTotals().FilesReplaced, 0);
  EXPECT_FALSE(Contains(h.proxy.Events(), "folders " + h.A() + " " + h.B()));
}

struct LastTaskCase {
  const char* name;
  const char* invalidRow;  // the source FoldersAreValid refuses
  bool scanSucceeded;
  std::size_t firstCopied;
  std::size_t secondCopied;
};

class LastTaskResult : public ::testing::TestWithParam<LastTaskCase> {};

TEST_P(LastTaskResult, DecidesWhetherAnythingIsCopied) {
  const LastTaskCase& c = GetParam();
  RunHarness h;
  TwoRows(h, 1);
  h.services.invalidSources = {h.Path(c.invalidRow)};

  RunDriver& run = h.Run();

  EXPECT_EQ(run.scanSucceeded(), c.scanSucceeded);
  EXPECT_EQ(trees::Read(h.Path("B1")).size(), c.firstCopied);
  EXPECT_EQ(trees::Read(h.Path("B2")).size(), c.secondCopied);
  EXPECT_EQ(h.services.calls.back(), "log");
}

INSTANTIATE_TEST_SUITE_P(RunDriver, LastTaskResult,
                         ::testing::Values(LastTaskCase{"LastFailsNothingIsCopied", "A2", false, 0, 0},
                                           LastTaskCase{"FirstFailsTheOtherIsCopied", "A1", true, 0, 1}),
                         [](const auto& info) { return std::string(info.param.name); });

TEST(RunDriver, APairOfSingleFilesIsOneItemOfTheirFolders) {
  RunHarness h;
  trees::Build(h.A(), {{"doc.txt", "text"}, {"other.txt", "left alone"}});
  h.document = MakeDocument({{h.A("doc.txt"), h.B("doc.txt"), 2}});

  RunDriver& run = h.Run();

  EXPECT_TRUE(run.scanSucceeded());
  EXPECT_EQ(trees::Read(h.B()), (trees::Tree{{"doc.txt", "text"}}));
  EXPECT_EQ(h.Task(0, 0).GetString("gSourceFolder"), h.A());
  EXPECT_EQ(h.Task(0, 0).GetString("gDestFolder"), h.B());
}

struct PreviewCase {
  const char* name;
  int executedBy;
  bool previewOn;
  bool answer;
  int previews;
  bool copied;
  bool logged;
};

class Preview : public ::testing::TestWithParam<PreviewCase> {};

TEST_P(Preview, IsShownToUsersOnlyAndCancelMeansNoCopyAndNoLog) {
  const PreviewCase& c = GetParam();
  RunHarness h;
  trees::Build(h.A(), {{"a.txt", "a"}});
  h.document = MakeDocument({{h.A(), h.B()}});
  h.preferences.Set("prefPreview", c.previewOn ? 1 : 0);
  h.proxy.previewAnswer = c.answer;

  RunDriver& run = h.Run(0, c.executedBy);

  EXPECT_EQ(h.proxy.previews, c.previews);
  EXPECT_EQ(trees::Read(h.B()).size(), c.copied ? 1u : 0u);
  EXPECT_EQ(Contains(h.services.calls, "log"), c.logged);
  // Stopping in the preview is the user's Stop: no shutting down or quitting afterwards.
  EXPECT_EQ(run.state().mUserPressedStop, c.previews == 1 && !c.answer);
}

INSTANTIATE_TEST_SUITE_P(
    RunDriver, Preview,
    ::testing::Values(PreviewCase{"UserAccepts", kExecutedByUser, true, true, 1, true, true},
                      PreviewCase{"UserCancels", kExecutedByUser, true, false, 1, false, false},
                      PreviewCase{"PreviewOff", kExecutedByUser, false, false, 0, true, true},
                      PreviewCase{"TimerRunNeverPreviews", kExecutedByTimer, true, false, 0, true, true},
                      PreviewCase{"CommandLineNeverPreviews", kExecutedByCommandLine, true, false, 0, true, true}),
    [](const auto& info) { return std::string(info.param.name); });

TEST(RunDriver, DatedSubFolderIsCreatedWhenNamedAndTheTaskSkippedWhenNot) {
  for (const bool named : {false, true}) {
    RunHarness h;
    trees::Build(h.A(), {{"a.txt", "a"}});
    h.document = MakeDocument({{h.A(), h.B(), 2, false, false, /*createDestFolder=*/true}});
    if (named) h.services.subFolderName = "Copy 2024/05/01";

    RunDriver& run = h.Run();

    EXPECT_TRUE(run.scanSucceeded());
    const trees::Tree want = named ? trees::Tree{{"Copy 2024:05:01/", ""}, {"Copy 2024:05:01/a.txt", "a"}} : trees::Tree{};
    EXPECT_EQ(trees::Read(h.B()), want);
    EXPECT_EQ(h.Sessions()[0].AsDict()->GetArray("logTaskArray")->size(), named ? 1u : 0u);
  }
}

struct PrivilegeCase {
  const char* name;
  int problem;
  int onError;
  std::size_t alerts;
  const char* words;
};

class TaskPrivileges : public ::testing::TestWithParam<PrivilegeCase> {};

TEST_P(TaskPrivileges, ARefusedTaskIsCountedAndDoesNotStopTheRun) {
  const PrivilegeCase& c = GetParam();
  RunHarness h;
  TwoRows(h, 2);
  // The last task is refused: it has no tree, but the run still counts as scanned.
  h.services.privilegeProblems[h.Path("A2")] = c.problem;
  h.preferences.Set("prefOnError", c.onError);

  RunDriver& run = h.Run();

  EXPECT_TRUE(run.scanSucceeded());
  EXPECT_EQ(trees::Read(h.Path("B1")), (trees::Tree{{"one.txt", "1"}}));
  EXPECT_TRUE(trees::Read(h.Path("B2")).empty());
  EXPECT_EQ(h.Task(0, 1).GetInt("gTotError"), 1);
  EXPECT_EQ(run.state().gGlobalError, 1);
  EXPECT_NE(h.Task(0, 1).GetString("gDetailedLogText").find(c.words), std::string::npos);
  ASSERT_EQ(h.proxy.alerts.size(), c.alerts);
  if (c.alerts > 0) {
    EXPECT_NE(h.proxy.alerts[0].text.find(c.words), std::string::npos);
  }
}

INSTANTIATE_TEST_SUITE_P(RunDriver, TaskPrivileges,
                         ::testing::Values(PrivilegeCase{"LockedAsked", 2, 3, 1, "Item Locked"},
                                           PrivilegeCase{"GoOnSilently", 1, 2, 0, "Insufficient Privileges"}),
                         [](const auto& info) { return std::string(info.param.name); });

struct ItemErrorCase {
  const char* name;
  int executedBy;
  int alertAnswer;  // 0 Continue, 1 Stop
  std::size_t alerts;
  bool secondCopied;
  bool datesSet;
};

class ItemError : public ::testing::TestWithParam<ItemErrorCase> {};

TEST_P(ItemError, IsCountedAndTheAnswerDecidesWhetherTheRunGoesOn) {
  const ItemErrorCase& c = GetParam();
  RunHarness h;
  trees::Build(h.A(), {{"a.txt", "a"}, {"b.txt", "b"}});
  h.document = MakeDocument({{h.A(), h.B(), 2}});
  h.proxy.alertAnswers = {c.alertAnswer};
  FaultFileSystem fs(h.realFs, {FailCall(FsOperation::kCopyItem, h.A("a.txt"), EIO)});

  RunDriver& run = h.Run(0, c.executedBy, &fs);

  EXPECT_EQ(run.state().gGlobalError, 1);
  EXPECT_EQ(h.Sessions()[0].AsDict()->GetInt("gTotError"), 1);
  ASSERT_EQ(h.proxy.alerts.size(), c.alerts);
  if (c.alerts > 0) {
    EXPECT_NE(h.proxy.alerts[0].text.find("Would you skip and continue?"), std::string::npos);
  }
  EXPECT_EQ(trees::Read(h.B()).count("b.txt"), c.secondCopied ? 1u : 0u);
  EXPECT_EQ(trees::BackupDate(h.B()).has_value(), c.datesSet);
}

INSTANTIATE_TEST_SUITE_P(RunDriver, ItemError,
                         ::testing::Values(ItemErrorCase{"UserContinues", kExecutedByUser, 0, 1, true, true},
                                           ItemErrorCase{"UserStops", kExecutedByUser, 1, 1, false, false},
                                           ItemErrorCase{"TimerGoesOnUnasked", kExecutedByTimer, 1, 0, true, true}),
                         [](const auto& info) { return std::string(info.param.name); });

struct PreferenceCase {
  const char* name;
  std::int64_t deltaOn;
  std::int64_t deltaField;
  std::int64_t logKind;
  std::int64_t wantDelta;
  bool wantDetailed;
  bool wantErrors;
};

class RunPreferences : public ::testing::TestWithParam<PreferenceCase> {};

TEST_P(RunPreferences, AreReadAtTheStartOfTheRun) {
  const PreferenceCase& c = GetParam();
  RunHarness h;
  h.document = MakeDocument({{h.A(), h.B()}});
  h.preferences.Set("prefModificationDelta", c.deltaOn);
  h.preferences.Set("prefModificationDeltaField", c.deltaField);
  h.preferences.Set("prefLogKind", c.logKind);

  RunDriver& run = h.Run();

  EXPECT_EQ(run.state().gModificationDelta, c.wantDelta);
  EXPECT_EQ(run.state().gMakeDetailedLog, c.wantDetailed);
  EXPECT_EQ(run.state().gMakeErrorsLog, c.wantErrors);
}

INSTANTIATE_TEST_SUITE_P(RunDriver, RunPreferences,
                         ::testing::Values(PreferenceCase{"DeltaOff", 0, 10, 1, 0, false, false},
                                           PreferenceCase{"DeltaOn", 1, 10, 2, 10, true, false},
                                           PreferenceCase{"DeltaZero", 1, 0, 3, 0, false, true},
                                           PreferenceCase{"DeltaNotExactlyOne", 2, 10, 2, 0, true, false}),
                         [](const auto& info) { return std::string(info.param.name); });

}  // namespace
}  // namespace marigold::run_test
