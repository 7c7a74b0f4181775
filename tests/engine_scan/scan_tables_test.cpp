// The scan's decisions on two real trees. How a conflict's rule, question and answers settle it
// is run whole, kind by kind, in the conflict tests; here are the dates and deletions around them.
#include <gtest/gtest.h>

#include <functional>

#include "scan_test_support.h"

namespace marigold::scantest {
namespace {

using Arrange = std::function<void(ScanHarness&, const TempTree& a, const TempTree& b)>;

struct ScanCase {
  const char* name;
  TaskKind kind;
  TreeShape a, b;
  std::map<std::string, int> want;
  std::vector<Arrange> setup = {};
  std::vector<int> asked = {};  // conflict kinds put to the user, in order
  std::int64_t skipped = 0;
};

TreeItem F(std::string path, std::int64_t mtime, std::optional<std::int64_t> backup = {}) {
  return {path, "data of " + path, mtime, backup};
}

Arrange Rules(std::function<void(SessionSwitches&)> change) {
  return [change](ScanHarness& h, const TempTree&, const TempTree&) { change(h.state.session); };
}
// The index of the last run lists these items on the side that no longer holds them.
Arrange WasOnB(std::string relative) {
  return [relative](ScanHarness& h, const TempTree&, const TempTree& b) { h.services.indexed.insert(b / relative); };
}
Arrange WasOnA(std::string relative) {
  return [relative](ScanHarness& h, const TempTree& a, const TempTree&) { h.services.indexed.insert(a / relative); };
}
Arrange Answers(std::vector<int> answers) {
  return [answers](ScanHarness& h, const TempTree&, const TempTree&) {
    h.proxy.replaceAnswers.assign(answers.begin(), answers.end());
  };
}
Arrange DestRootBackedUp(std::int64_t date) {
  return [date](ScanHarness& h, const TempTree&, const TempTree& b) { ASSERT_TRUE(h.fs.SetBackupDate(b.Path(), date)); };
}

const Arrange kBackupRadioOff = Rules([](SessionSwitches& s) { s.gIsConflictBackupRadio = false; });
const Arrange kExactBackupRadioOff = Rules([](SessionSwitches& s) { s.gIsConflictExactBackupRadio = false; });
const Arrange kSyncRadioOff = Rules([](SessionSwitches& s) { s.gIsConflictSyncRadio = false; });
const Arrange kExactSyncRadioOff = Rules([](SessionSwitches& s) { s.gIsConflictExactSyncRadio = false; });
const Arrange kExactSyncAsk = Rules([](SessionSwitches& s) { s.gIsConflictExactSyncAsk = true; });
constexpr int kReplace = kReplaceResultReplace;

void PrintTo(const ScanCase& c, std::ostream* os) { *os << c.name; }

class ScanDecides : public ::testing::TestWithParam<ScanCase> {};

TEST_P(ScanDecides, EveryItem) {
  const ScanCase& c = GetParam();
  TempTree a{c.a}, b{c.b};
  ScanHarness h{c.kind};
  for (const Arrange& setup : c.setup) setup(h, a, b);
  ASSERT_TRUE(h.Scan(a.Path(), b.Path()));
  EXPECT_EQ(h.Modes(), c.want);
  std::vector<int> asked;
  for (const ReplaceRequest& request : h.proxy.asked) asked.push_back(request.conflict);
  EXPECT_EQ(asked, c.asked);
  EXPECT_EQ(h.state.gConflictsSkipped, c.skipped);
  EXPECT_EQ(h.state.gTotError, 0);
}

const auto kName = [](const auto& info) { return std::string(info.param.name); };

INSTANTIATE_TEST_SUITE_P(Backup, ScanDecides, ::testing::Values(
    ScanCase{"SourceNewerReplaces", TaskKind::kBackup, {F("f", T + 10)}, {F("f", T)}, {{"f", 4}}},
    ScanCase{"EqualDatesAreNotListed", TaskKind::kBackup, {F("f", T)}, {F("f", T)}, {}},
    ScanCase{"SourceOnlyIsCopied", TaskKind::kBackup, {F("f", T)}, {}, {{"f", 2}}},
    ScanCase{"DestinationOnlyIsNotListed", TaskKind::kBackup, {}, {F("g", T)}, {}},
    ScanCase{"DestUnchangedSinceLastRunIsReplaced", TaskKind::kBackup, {F("f", T + 10)}, {F("f", T + 4, T + 5)},
             {{"f", 4}}, {kBackupRadioOff}},
    ScanCase{"NoLastRunDateReplaces", TaskKind::kBackup, {F("f", T + 10)}, {F("f", T + 8)}, {{"f", 4}},
             {kBackupRadioOff}},
    ScanCase{"RootDateStandsInForItemDates", TaskKind::kBackup, {F("f", T + 10)}, {F("f", T + 8)}, {},
             {kBackupRadioOff, DestRootBackedUp(T + 5)}, {}, 1},
    ScanCase{"LaterOfTheTwoBackupDatesCounts", TaskKind::kBackup, {F("f", T + 10, T + 9)}, {F("f", T + 8, T + 5)},
             {{"f", 4}}, {kBackupRadioOff}},
    ScanCase{"FolderPairIsWalked", TaskKind::kBackup, {F("d/f", T + 10)}, {F("d/f", T)}, {{"d", 1}, {"d/f", 4}}}),
  kName);

INSTANTIATE_TEST_SUITE_P(ExactBackup, ScanDecides, ::testing::Values(
    ScanCase{"LeftoverIsDeleted", TaskKind::kExactBackup, {}, {F("g", T)}, {{"g", 7}}},
    ScanCase{"LeftoverUnchangedIsDeleted", TaskKind::kExactBackup, {}, {F("g", T + 4, T + 5)}, {{"g", 7}},
             {kExactBackupRadioOff, DestRootBackedUp(T + 1)}},
    ScanCase{"FolderKeepsWhatItsRuleKeeps", TaskKind::kExactBackup, {}, {F("d/x", T + 8)}, {},
             {kExactBackupRadioOff, DestRootBackedUp(T + 5)}, {}, 1}),
  kName);

INSTANTIATE_TEST_SUITE_P(Sync, ScanDecides, ::testing::Values(
    ScanCase{"NewerWinsEachWay", TaskKind::kSync, {F("x", T + 10), F("y", T)}, {F("x", T), F("y", T + 10)},
             {{"x", 4}, {"y", 5}}},
    ScanCase{"OneSidedItemsGoAcross", TaskKind::kSync, {F("x", T)}, {F("y", T)}, {{"x", 2}, {"y", 3}}},
    ScanCase{"OnlyOneChangedIsNoConflict", TaskKind::kSync, {F("x", T + 10, T + 5)}, {F("x", T + 4, T + 5)},
             {{"x", 4}}, {kSyncRadioOff}},
    ScanCase{"DSStoreNeverConflicts", TaskKind::kSync, {F(".DS_Store", T + 10, T + 5)},
             {F(".DS_Store", T + 8, T + 5)}, {{".DS_Store", 4}}, {kSyncRadioOff}}),
  kName);

INSTANTIATE_TEST_SUITE_P(ExactSync, ScanDecides, ::testing::Values(
    ScanCase{"NewOnAIsCopied", TaskKind::kExactSync, {F("x", T)}, {}, {{"x", 2}}},
    ScanCase{"NewOnBIsCopied", TaskKind::kExactSync, {}, {F("y", T)}, {{"y", 3}}},
    ScanCase{"DeletedOnBIsDeletedOnA", TaskKind::kExactSync, {F("x", T)}, {}, {{"x", 6}}, {WasOnB("x")}},
    ScanCase{"DeletedOnAIsDeletedOnB", TaskKind::kExactSync, {}, {F("y", T)}, {{"y", 7}}, {WasOnA("y")}},
    ScanCase{"ChangedSinceDeletionIsCopiedBack", TaskKind::kExactSync, {F("x", T + 8, T + 5)}, {}, {{"x", 2}},
             {WasOnB("x"), kExactSyncRadioOff}, {}, 1},
    ScanCase{"ChangedSinceDeletionAsked", TaskKind::kExactSync, {}, {F("y", T + 8, T + 5)}, {{"y", 7}},
             {WasOnA("y"), kExactSyncAsk, Answers({kReplace})}, {41}},
    ScanCase{"NewFileGoesWithItsDeletedFolder", TaskKind::kExactSync, {}, {F("d/new", T)},
             {{"d", 7}, {"d/new", 7}}, {WasOnA("d")}},
    ScanCase{"NewFileKeepsItsDeletedFolder", TaskKind::kExactSync, {}, {F("d/new", T)}, {{"d", 3}, {"d/new", 3}},
             {WasOnA("d"), kExactSyncRadioOff}, {}, 1},
    ScanCase{"DSStoreGoesWithItsDeletedFolder", TaskKind::kExactSync, {F("d/.DS_Store", T)}, {},
             {{"d", 6}, {"d/.DS_Store", 6}}, {WasOnB("d"), kExactSyncRadioOff}},
    ScanCase{"NewFileInDeletedFolderAsked", TaskKind::kExactSync, {F("d/new", T)}, {}, {{"d", 6}, {"d/new", 6}},
             {WasOnB("d"), kExactSyncAsk, Answers({kReplace})}, {42}}),
  kName);

}  // namespace
}  // namespace marigold::scantest
