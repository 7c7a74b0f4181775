// The scan's decisions on two real trees where the walk takes part: folders deleted on one side,
// what they keep, and the questions put to the user. How a conflict's rule, question and answers
// settle it is run whole, kind by kind, in the conflict tests.
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

const Arrange kExactBackupRadioOff = Rules([](SessionSwitches& s) { s.gIsConflictExactBackupRadio = false; });
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
  EXPECT_EQ(h.proxy.Conflicts(), c.asked);
  EXPECT_EQ(h.state.gConflictsSkipped, c.skipped);
  EXPECT_EQ(h.state.gTotError, 0);
}

INSTANTIATE_TEST_SUITE_P(DeletedFolders, ScanDecides, ::testing::Values(
    ScanCase{"ExactBackupFolderKeepsWhatItsRuleKeeps", TaskKind::kExactBackup, {}, {F("d/x", T + 8)}, {},
             {kExactBackupRadioOff, DestRootBackedUp(T + 5)}, {}, 1},
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
  [](const auto& info) { return std::string(info.param.name); });

}  // namespace
}  // namespace marigold::scantest
