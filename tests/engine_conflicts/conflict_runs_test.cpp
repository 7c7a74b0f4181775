// Conflicts met by whole runs on real trees: a first run brings the two sides into step and
// dates them, the user then changes both sides, and the next run meets the conflict. Every kind
// is run under every way of settling it: the rule's radio either way, each answer of the prompt,
// and nobody there to answer.
#include <gtest/gtest.h>

#include <filesystem>
#include <functional>

#include "conflict_harness.h"

namespace marigold::conflicts_test {
namespace {

using trees::Tree;

constexpr std::int64_t kOld = 1500000000;
constexpr std::int64_t kNew = 1600000000;

// What the user did between the runs, and what the next run must then do.
struct Scenario {
  const char* name;
  Task task;
  bool exact;
  // Builds the trees (running earlier runs as needed) and returns the date the prompt must show.
  std::function<std::optional<std::int64_t>(ConflictRun&)> prepare;
  int conflict;
  int copyMode;
  const char* radioKey;
  const char* askKey;
  std::int64_t goAheadTag;
  std::int64_t skipTag;
  bool defaultGoesAhead;
  Tree carriedOutA, carriedOutB;
  // Where the user changed the direction (sync only): the other file wins.
  std::optional<Tree> reversedA, reversedB;
};

// A first run that copies f.txt from A to B; returns its start, f.txt's backup date on B.
std::int64_t FirstRun(ConflictRun& h) {
  trees::Build(h.A(), {{"f.txt", "one"}});
  trees::SetModified(h.A("f.txt"), kOld);
  const std::int64_t start = h.Run();
  EXPECT_EQ(trees::Read(h.B()), (Tree{{"f.txt", "one"}}));
  EXPECT_EQ(trees::BackupDate(h.B("f.txt")), start);
  return start;
}

// Both sides edit f.txt after the first run, A last.
std::optional<std::int64_t> BothEdited(ConflictRun& h) {
  const std::int64_t last = FirstRun(h);
  trees::Write(h.A("f.txt"), "A edit");
  trees::SetModified(h.A("f.txt"), last + 200);
  trees::Write(h.B("f.txt"), "B edit");
  trees::SetModified(h.B("f.txt"), last + 100);
  return last;
}

const std::vector<Scenario>& Scenarios() {
  static const std::vector<Scenario> kScenarios{
      {"Backup11", kBackup, false, BothEdited, 11, 4, "conflictBackupRadio", "conflictBackupAsk", 2, 1, true,
       {{"f.txt", "A edit"}}, {{"f.txt", "A edit"}}, {}, {}},
      {"Backup12", kBackup, false,
       [](ConflictRun& h) -> std::optional<std::int64_t> {
         const std::int64_t last = FirstRun(h);
         trees::Write(h.B("f.txt"), "B edit");
         trees::SetModified(h.B("f.txt"), last + 100);
         return last + 100;  // the destination's modification date
       },
       12, 4, "conflictBackupRadio2", "conflictBackupAsk2", 2, 1, false, {{"f.txt", "one"}}, {{"f.txt", "one"}}, {}, {}},
      {"ExactBackup21", kBackup, true,
       [](ConflictRun& h) -> std::optional<std::int64_t> {
         const std::int64_t last = FirstRun(h);
         std::filesystem::remove(h.A("f.txt"));
         // A source left empty would look like a volume that is not mounted.
         for (const std::string& side : {h.A("stay.txt"), h.B("stay.txt")}) {
           trees::Write(side, "s");
           trees::SetModified(side, kOld);
         }
         trees::Write(h.B("f.txt"), "B edit");
         trees::SetModified(h.B("f.txt"), last + 100);
         return last;  // the file's own backup date
       },
       21, 7, "conflictExactBackupRadio", "conflictExactBackupAsk", 2, 1, true, {{"stay.txt", "s"}},
       {{"stay.txt", "s"}}, {}, {}},
      {"ExactBackup22", kBackup, true,
       [](ConflictRun& h) -> std::optional<std::int64_t> {
         const std::int64_t last = FirstRun(h);
         trees::Write(h.B("added.txt"), "new on B");
         return last;  // the destination root's backup date
       },
       22, 7, "conflictExactBackupRadio", "conflictExactBackupAsk", 2, 1, true, {{"f.txt", "one"}},
       {{"f.txt", "one"}}, {}, {}},
      {"Sync31", kSync, false, BothEdited, 31, 4, "conflictSyncRadio", "conflictSyncAsk", 2, 1, true,
       {{"f.txt", "A edit"}}, {{"f.txt", "A edit"}}, Tree{{"f.txt", "B edit"}}, Tree{{"f.txt", "B edit"}}},
      {"FileReplacesFolder51", kBackup, false,
       [](ConflictRun& h) -> std::optional<std::int64_t> {
         trees::Build(h.A(), {{"x", "file"}});
         trees::Build(h.B(), {{"x/", ""}, {"x/inner.txt", "in folder"}});
         trees::SetModified(h.A("x"), kNew);
         trees::SetModified(h.B("x"), kOld);
         return kOld;  // the destination's modification date
       },
       51, 4, "conflictFileFolderRadio", "conflictFileFolderAsk", 1, 2, true, {{"x", "file"}}, {{"x", "file"}}, {},
       {}},
      {"FolderAgainstNewerFile52", kSync, false,
       [](ConflictRun& h) -> std::optional<std::int64_t> {
         trees::Build(h.A(), {{"x/", ""}, {"x/inner.txt", "in folder"}});
         trees::Build(h.B(), {{"x", "file"}});
         trees::SetModified(h.A("x"), kOld);
         trees::SetModified(h.B("x"), kNew);
         return kNew;
       },
       52, 5, "conflictFileFolderRadio", "conflictFileFolderAsk", 1, 2, true, {{"x", "file"}}, {{"x", "file"}}, {},
       {}},
  };
  return kScenarios;
}

void PrintTo(const Scenario& scenario, std::ostream* out) { *out << scenario.name; }

enum class Outcome { kCarriedOut, kLeftAlone, kReversed, kDefault };

// How the next run is told to settle the conflict.
struct Settling {
  const char* name;
  std::optional<bool> radioGoesAhead;  // nothing: the default rule
  bool ask;
  int executedBy;
  std::vector<int> answers;
  Outcome want;
  bool stops;
};

void PrintTo(const Settling& settling, std::ostream* out) { *out << settling.name; }

const std::vector<Settling> kSettlings{
    {"Defaults", std::nullopt, false, kExecutedByUser, {}, Outcome::kDefault, false},
    {"RadioGoesAhead", true, false, kExecutedByUser, {}, Outcome::kCarriedOut, false},
    {"RadioSkips", false, false, kExecutedByUser, {}, Outcome::kLeftAlone, false},
    // The question wins over the radio either way.
    {"AskReplace", false, true, kExecutedByUser, {kReplaceResultReplace}, Outcome::kCarriedOut, false},
    {"AskSkip", true, true, kExecutedByUser, {kReplaceResultSkip}, Outcome::kLeftAlone, false},
    {"AskStop", true, true, kExecutedByUser, {kReplaceResultStop}, Outcome::kLeftAlone, true},
    {"AskChangeDirection", true, true, kExecutedByUser, {-kReplaceResultReplace}, Outcome::kReversed, false},
    {"AskStopAfterChangingDirection", true, true, kExecutedByUser, {-kReplaceResultStop}, Outcome::kLeftAlone, true},
    {"AskedInATimerRun", true, true, kExecutedByTimer, {}, Outcome::kLeftAlone, false},
    {"AskedInAnUnattendedCommandLineRun", true, true, kExecutedByCommandLine, {}, Outcome::kLeftAlone, false},
};

class ConflictKinds : public ::testing::TestWithParam<std::tuple<Scenario, Settling>> {};

TEST_P(ConflictKinds, AreSettledAsTheRulesAndAnswersSay) {
  const auto& [scenario, settling] = GetParam();
  ConflictRun h(scenario.task, scenario.exact);
  const std::optional<std::int64_t> shownDate = scenario.prepare(h);
  if (settling.radioGoesAhead) {
    h.SetRule(scenario.radioKey, *settling.radioGoesAhead ? scenario.goAheadTag : scenario.skipTag);
  }
  h.SetRule(scenario.askKey, settling.ask ? 1 : 0);
  h.proxy.replaceAnswers.assign(settling.answers.begin(), settling.answers.end());
  if (settling.stops) trees::Build(h.A(), {{"late.txt", "not copied after a stop"}});
  const Tree beforeA = trees::Read(h.A());
  const Tree beforeB = trees::Read(h.B());
  const std::optional<std::int64_t> rootDateA = trees::BackupDate(h.A());
  const std::optional<std::int64_t> rootDateB = trees::BackupDate(h.B());

  const std::int64_t start = h.Run(settling.executedBy);

  Outcome outcome = settling.want;
  if (outcome == Outcome::kDefault) outcome = scenario.defaultGoesAhead ? Outcome::kCarriedOut : Outcome::kLeftAlone;
  // Only two files that both changed in a synchronisation can change direction; elsewhere the
  // answer is a plain Replace.
  if (outcome == Outcome::kReversed && !scenario.reversedA) outcome = Outcome::kCarriedOut;
  switch (outcome) {
    case Outcome::kCarriedOut:
      EXPECT_EQ(trees::Read(h.A()), scenario.carriedOutA);
      EXPECT_EQ(trees::Read(h.B()), scenario.carriedOutB);
      break;
    case Outcome::kReversed:
      EXPECT_EQ(trees::Read(h.A()), *scenario.reversedA);
      EXPECT_EQ(trees::Read(h.B()), *scenario.reversedB);
      break;
    case Outcome::kLeftAlone:
    case Outcome::kDefault:
      EXPECT_EQ(trees::Read(h.A()), beforeA);
      EXPECT_EQ(trees::Read(h.B()), beforeB);
      break;
  }
  const std::int64_t wantSkipped = outcome == Outcome::kLeftAlone ? 1 : 0;
  EXPECT_EQ(h.RecordedConflictsSkipped(), wantSkipped);
  EXPECT_EQ(h.state().gGlobalConflictsSkipped, wantSkipped);
  EXPECT_EQ(h.state().gGlobalError, 0);

  const bool asked = settling.ask && settling.executedBy == kExecutedByUser;
  ASSERT_EQ(h.proxy.asked.size(), asked ? 1u : 0u);
  if (asked) {
    const ReplaceRequest& request = h.proxy.asked.front();
    EXPECT_EQ(request.conflict, scenario.conflict);
    EXPECT_EQ(request.copyMode, scenario.copyMode);
    EXPECT_EQ(request.lastBackupDate, shownDate);
    EXPECT_EQ(request.isSync, scenario.task == kSync);
    const std::string name = scenario.conflict >= 51 ? "x" : scenario.conflict == 22 ? "added.txt" : "f.txt";
    EXPECT_EQ(request.source, h.A(name));
    EXPECT_EQ(request.dest, h.B(name));
  }

  EXPECT_EQ(h.state().mUserPressedStop, settling.stops);
  if (settling.stops) {
    // A stopped run claims nothing: the roots keep the date of the last complete run.
    EXPECT_EQ(trees::BackupDate(h.A()), rootDateA);
    EXPECT_EQ(trees::BackupDate(h.B()), rootDateB);
  } else {
    EXPECT_EQ(trees::BackupDate(h.A()), start);
    EXPECT_EQ(trees::BackupDate(h.B()), start);
  }
}

INSTANTIATE_TEST_SUITE_P(EveryKind, ConflictKinds,
                         ::testing::Combine(::testing::ValuesIn(Scenarios()), ::testing::ValuesIn(kSettlings)),
                         [](const auto& info) {
                           return std::string(std::get<0>(info.param).name) + "_" + std::get<1>(info.param).name;
                         });

// A conflict that is skipped stays a conflict: the next run meets it again with the same date of
// the last run, and once it is settled the run after that finds the two sides in step.
TEST(ConflictRuns, ASkippedConflictIsMetAgainUntilSettled) {
  ConflictRun h(kSync, false);
  const std::optional<std::int64_t> last = BothEdited(h);
  h.SetRule("conflictSyncAsk", 1);

  h.proxy.replaceAnswers = {kReplaceResultSkip};
  h.Run();
  ASSERT_EQ(h.proxy.asked.size(), 1u);
  EXPECT_EQ(h.proxy.asked[0].lastBackupDate, last);

  h.proxy.replaceAnswers = {-kReplaceResultReplace};
  h.Run();
  ASSERT_EQ(h.proxy.asked.size(), 1u);
  EXPECT_EQ(h.proxy.asked[0].lastBackupDate, last);
  EXPECT_EQ(trees::Read(h.A()), (Tree{{"f.txt", "B edit"}}));
  EXPECT_EQ(trees::Read(h.B()), (Tree{{"f.txt", "B edit"}}));

  h.Run();
  EXPECT_TRUE(h.proxy.asked.empty());
  EXPECT_EQ(h.state().gGlobalConflictsSkipped, 0);
}

// Before the first exact backup the destination has no date of a last run, so nothing there can
// have changed "since" it: files only the destination holds go without a question.
TEST(ConflictRuns, AFirstExactBackupAsksNothingAboutDestinationFiles) {
  ConflictRun h(kBackup, true);
  trees::Build(h.A(), {{"keep.txt", "k"}});
  trees::Build(h.B(), {{"dated.txt", "d"}, {"undated.txt", "u"}});
  ASSERT_TRUE(h.realFs.SetBackupDate(h.B("dated.txt"), kOld));
  trees::SetModified(h.B("dated.txt"), kNew);
  h.SetRule("conflictExactBackupRadio", 1);
  h.SetRule("conflictExactBackupAsk", 1);

  h.Run();

  EXPECT_TRUE(h.proxy.asked.empty());
  EXPECT_EQ(trees::Read(h.B()), (Tree{{"keep.txt", "k"}}));
  EXPECT_EQ(h.state().gGlobalConflictsSkipped, 0);
}

// Several conflicts in one run: each is asked in turn, and only the refused ones are counted.
TEST(ConflictRuns, EachConflictOfARunIsAskedAndOnlyRefusalsAreCounted) {
  ConflictRun h(kBackup, true);
  trees::Build(h.A(), {{"a.txt", "a"}, {"b.txt", "b"}, {"c.txt", "c"}, {"stay.txt", "s"}});
  const std::int64_t last = h.Run();
  for (const char* name : {"a.txt", "b.txt", "c.txt"}) {
    std::filesystem::remove(h.A(name));
    trees::SetModified(h.B(name), last + 100);
  }
  h.SetRule("conflictExactBackupAsk", 1);
  h.proxy.replaceAnswers = {kReplaceResultSkip, kReplaceResultReplace, kReplaceResultSkip};

  h.Run();

  ASSERT_EQ(h.proxy.asked.size(), 3u);
  EXPECT_EQ(h.proxy.asked[1].dest, h.B("b.txt"));
  EXPECT_EQ(trees::Read(h.B()), (Tree{{"a.txt", "a"}, {"c.txt", "c"}, {"stay.txt", "s"}}));
  EXPECT_EQ(h.RecordedConflictsSkipped(), 2);
  EXPECT_EQ(h.state().gGlobalConflictsSkipped, 2);
}

}  // namespace
}  // namespace marigold::conflicts_test
