// The scan's decisions for one item, from what each side holds and the session's rules, without a
// disk: each row is one item of a task. The walk around them is tested on real trees elsewhere.
#include <gtest/gtest.h>

#include <functional>

#include "engine/scan_decisions.h"
#include "scan_test_support.h"

namespace marigold::scantest {
namespace {

ItemSide At(std::int64_t modified, std::optional<std::int64_t> backup = {}) {
  return {.present = true, .modified = modified, .backupDateRead = true, .backupDate = backup};
}
ItemSide Dir() { return {.present = true, .isDirectory = true, .isFolder = true, .backupDateRead = true}; }

struct DecisionCase {
  const char* name;
  TaskKind kind;
  std::optional<ItemSide> a, b;
  int want;                // the mode carried out, or proposed when the user is asked
  int conflict = kConflictNone;
  bool refused = false;    // the rule refused without asking, and counts a skipped conflict
  bool asked = false;
  std::function<void(ScanRules&)> rules = {};
  bool wasOnOtherSide = false;  // the index of the last run lists it on the side that lacks it
  int folderMode = kCopyModeNothing;
  bool dsStore = false;
};

void PrintTo(const DecisionCase& c, std::ostream* os) { *os << c.name; }

// A new session's rules: every conflict rule's radio button on, nothing asked.
ScanRules NewSession(TaskKind kind) {
  ScanRules rules;
  SessionSwitches& s = rules.switches;
  s.gIsSyncOn = kind == TaskKind::kSync || kind == TaskKind::kExactSync;
  s.gIsExactOn = kind == TaskKind::kExactBackup || kind == TaskKind::kExactSync;
  s.gIsConflictBackupRadio = s.gIsConflictExactBackupRadio = s.gIsConflictSyncRadio = true;
  s.gIsConflictExactSyncRadio = s.gIsConflictFileFolderRadio = true;
  rules.hasIndex = kind == TaskKind::kExactSync;
  return rules;
}

const auto kBackupRadioOff = [](ScanRules& r) { r.switches.gIsConflictBackupRadio = false; };
const auto kExactBackupRadioOff = [](ScanRules& r) { r.switches.gIsConflictExactBackupRadio = false; };
const auto kSyncRadioOff = [](ScanRules& r) { r.switches.gIsConflictSyncRadio = false; };
const auto kExactSyncRadioOff = [](ScanRules& r) { r.switches.gIsConflictExactSyncRadio = false; };
const auto kExactSyncAsk = [](ScanRules& r) { r.switches.gIsConflictExactSyncAsk = true; };
std::function<void(ScanRules&)> DestRootBackedUp(std::int64_t date, std::function<void(ScanRules&)> also) {
  return [=](ScanRules& r) { r.mainDestFolderBackupDate = date; also(r); };
}
std::function<void(ScanRules&)> Delta(std::int64_t seconds) {
  return [=](ScanRules& r) { r.modificationDelta = seconds; };
}

class ItemDecision : public ::testing::TestWithParam<DecisionCase> {};

TEST_P(ItemDecision, ModeAndConflict) {
  const DecisionCase& c = GetParam();
  ScanRules rules = NewSession(c.kind);
  if (c.rules) c.rules(rules);
  const Decision d = c.a && c.b ? DecideBothPresent(*c.a, *c.b, c.dsStore, rules)
                                : DecideOneSide(c.a ? *c.a : *c.b, c.a.has_value(), c.dsStore, c.wasOnOtherSide,
                                                c.folderMode, rules);
  EXPECT_EQ(d.mode, c.want);
  EXPECT_EQ(d.conflict, c.conflict);
  EXPECT_EQ(d.conflictSkipped, c.refused);
  EXPECT_EQ(d.ask, c.asked);
  EXPECT_FALSE(d.needsBackupDates);
}

const auto kName = [](const auto& info) { return std::string(info.param.name); };

INSTANTIATE_TEST_SUITE_P(Backup, ItemDecision, ::testing::Values(
    DecisionCase{"SourceNewerReplaces", TaskKind::kBackup, At(T + 10), At(T), 4},
    DecisionCase{"EqualDatesAreLeftAlone", TaskKind::kBackup, At(T), At(T), 0},
    DecisionCase{"SourceOnlyIsCopied", TaskKind::kBackup, At(T), {}, 2},
    DecisionCase{"DestinationOnlyIsLeftAlone", TaskKind::kBackup, {}, At(T), 0},
    DecisionCase{"DestUnchangedSinceLastRunIsReplaced", TaskKind::kBackup, At(T + 10), At(T + 4, T + 5), 4, 0,
                 false, false, kBackupRadioOff},
    DecisionCase{"NoLastRunDateReplaces", TaskKind::kBackup, At(T + 10), At(T + 8), 4, 0, false, false,
                 kBackupRadioOff},
    DecisionCase{"RootDateStandsInForItemDates", TaskKind::kBackup, At(T + 10), At(T + 8), 0,
                 kConflictBackupDestChanged, true, false, DestRootBackedUp(T + 5, kBackupRadioOff)},
    DecisionCase{"LaterOfTheTwoBackupDatesCounts", TaskKind::kBackup, At(T + 10, T + 9), At(T + 8, T + 5), 4, 0,
                 false, false, kBackupRadioOff},
    DecisionCase{"DestinationNewerIsKept", TaskKind::kBackup, At(T), At(T + 10), 0, kConflictBackupDestNewer, true},
    DecisionCase{"FolderPairIsWalked", TaskKind::kBackup, Dir(), Dir(), 1}),
  kName);

INSTANTIATE_TEST_SUITE_P(ExactBackup, ItemDecision, ::testing::Values(
    DecisionCase{"LeftoverIsDeleted", TaskKind::kExactBackup, {}, At(T), 7},
    DecisionCase{"LeftoverUnchangedIsDeleted", TaskKind::kExactBackup, {}, At(T + 4, T + 5), 7, 0, false, false,
                 DestRootBackedUp(T + 1, kExactBackupRadioOff)},
    DecisionCase{"LeftoverChangedSinceItsBackupIsKept", TaskKind::kExactBackup, {}, At(T + 8, T + 5), 0,
                 kConflictExactBackupChanged, true, false, DestRootBackedUp(T + 1, kExactBackupRadioOff)},
    DecisionCase{"LeftoverAddedSinceTheLastBackupIsKept", TaskKind::kExactBackup, {}, At(T + 8), 0,
                 kConflictExactBackupAdded, true, false, DestRootBackedUp(T + 5, kExactBackupRadioOff)},
    DecisionCase{"NothingChangedBeforeTheFirstBackup", TaskKind::kExactBackup, {}, At(T + 8), 7, 0, false, false,
                 kExactBackupRadioOff}),
  kName);

INSTANTIATE_TEST_SUITE_P(Sync, ItemDecision, ::testing::Values(
    DecisionCase{"NewerOnAWins", TaskKind::kSync, At(T + 10), At(T), 4},
    DecisionCase{"NewerOnBWins", TaskKind::kSync, At(T), At(T + 10), 5},
    DecisionCase{"ExactlyDeltaApartIsEqual", TaskKind::kSync, At(T + 2), At(T), 0, 0, false, false, Delta(2)},
    DecisionCase{"DeltaPlusOneDiffers", TaskKind::kSync, At(T + 3), At(T), 4, 0, false, false, Delta(2)},
    DecisionCase{"DeltaPlusOneTheOtherWay", TaskKind::kSync, At(T), At(T + 3), 5, 0, false, false, Delta(2)},
    DecisionCase{"OnlyOnAGoesAcross", TaskKind::kSync, At(T), {}, 2},
    DecisionCase{"OnlyOnBGoesAcross", TaskKind::kSync, {}, At(T), 3},
    DecisionCase{"OnlyOneChangedIsNoConflict", TaskKind::kSync, At(T + 10, T + 5), At(T + 4, T + 5), 4, 0, false,
                 false, kSyncRadioOff},
    DecisionCase{"BothChangedIsRefused", TaskKind::kSync, At(T + 10, T + 5), At(T + 8, T + 5), 0,
                 kConflictSyncBothChanged, true, false, kSyncRadioOff},
    DecisionCase{"DSStoreNeverConflicts", TaskKind::kSync, At(T + 10, T + 5), At(T + 8, T + 5), 4, 0, false, false,
                 kSyncRadioOff, false, 1, true},
    DecisionCase{"NewItemsOnlyLeavesPairsAlone", TaskKind::kSync, At(T + 10), At(T), 0, 0, false, false,
                 [](ScanRules& r) { r.switches.gIsNewItemsOnly = true; }}),
  kName);

INSTANTIATE_TEST_SUITE_P(ExactSync, ItemDecision, ::testing::Values(
    DecisionCase{"NewOnAIsCopied", TaskKind::kExactSync, At(T), {}, 2},
    DecisionCase{"NewOnBIsCopied", TaskKind::kExactSync, {}, At(T), 3},
    DecisionCase{"DeletedOnBIsDeletedOnA", TaskKind::kExactSync, At(T), {}, 6, 0, false, false, {}, true},
    DecisionCase{"DeletedOnAIsDeletedOnB", TaskKind::kExactSync, {}, At(T), 7, 0, false, false, {}, true},
    DecisionCase{"ChangedSinceDeletionIsCopiedBack", TaskKind::kExactSync, At(T + 8, T + 5), {}, 2,
                 kConflictExactSyncDeleted, true, false, kExactSyncRadioOff, true},
    DecisionCase{"UnchangedSinceDeletionGoes", TaskKind::kExactSync, At(T + 4, T + 5), {}, 6, 0, false, false,
                 kExactSyncRadioOff, true},
    DecisionCase{"ChangedSinceDeletionIsAsked", TaskKind::kExactSync, {}, At(T + 8, T + 5), 7,
                 kConflictExactSyncDeleted, false, true, kExactSyncAsk, true},
    DecisionCase{"NewFileGoesWithItsDeletedFolder", TaskKind::kExactSync, {}, At(T), 7,
                 kConflictExactSyncParentDeleted, false, false, {}, false, kCopyModeDeleteInB},
    DecisionCase{"NewFileKeepsItsDeletedFolder", TaskKind::kExactSync, {}, At(T), 3,
                 kConflictExactSyncParentDeleted, true, false, kExactSyncRadioOff, false, kCopyModeDeleteInB},
    DecisionCase{"DSStoreGoesWithItsDeletedFolder", TaskKind::kExactSync, At(T), {}, 6, 0, false, false,
                 kExactSyncRadioOff, false, kCopyModeDeleteInA, true},
    DecisionCase{"NewFileInADeletedFolderIsAsked", TaskKind::kExactSync, At(T), {}, 6,
                 kConflictExactSyncParentDeleted, false, true, kExactSyncAsk, false, kCopyModeDeleteInA}),
  kName);

// A rule that needs backup dates says so before it decides, so the scan reads them only then.
TEST(ItemDecisionDates, AskedForOnlyWhenARuleNeedsThem) {
  ScanRules rules = NewSession(TaskKind::kSync);
  ItemSide a = At(T + 10), b = At(T);
  a.backupDateRead = b.backupDateRead = false;
  EXPECT_FALSE(DecideBothPresent(a, b, false, rules).needsBackupDates);
  rules.switches.gIsConflictSyncRadio = false;
  EXPECT_TRUE(DecideBothPresent(a, b, false, rules).needsBackupDates);
}

// Attribute changes: the side whose status changed last wins a synchronisation, a backup always
// carries A's, and a case-only rename goes by the access dates beyond two seconds.
TEST(AttrChangedMode, StatusTimeOrdersAndAccessDatesCarryRenames) {
  auto side = [](std::int64_t changed, std::int64_t accessed) {
    return ItemSide{.present = true, .statusChanged = {changed, 0}, .accessed = accessed};
  };
  const AttrDifference both{true, true};
  const struct { const char* name; ItemSide a, b; AttrDifference difference; bool namesDiffer, sync; int want; } cases[] = {
      {"ALaterInSync", side(T + 100, T), side(T, T), both, false, true, 8},
      {"BLaterInSync", side(T - 100, T), side(T, T), both, false, true, 9},
      {"BLaterButNothingTowardA", side(T - 100, T), side(T, T), {true, false}, false, true, 0},
      {"BackupAlwaysCarriesA", side(T - 100, T), side(T, T), both, false, false, 8},
      {"RenameByLaterAccessOnA", side(T, T + 100), side(T, T), {}, true, true, 8},
      {"RenameByLaterAccessOnB", side(T, T), side(T, T + 100), {}, true, true, 9},
      {"BackupNeverRenamesA", side(T, T), side(T, T + 100), {}, true, false, 0},
      {"TwoSecondsAreTheSame", side(T, T + 2), side(T, T), {}, true, true, 0},
  };
  for (const auto& c : cases)
    EXPECT_EQ(AttrChangedMode(0, c.a, c.b, c.difference, c.namesDiffer, true, c.sync, 0), c.want) << c.name;
}

}  // namespace
}  // namespace marigold::scantest
