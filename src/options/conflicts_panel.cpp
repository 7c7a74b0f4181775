#include "options/conflicts_panel.h"

#include "util/strings_table.h"

namespace marigold {
namespace {

const PlistDict& ConflictsOf(const PlistDict& session) {
  static const PlistDict kEmpty;
  const PlistDict* dict = session.GetDict("conflictsDict");
  return dict ? *dict : kEmpty;
}

std::string IconNameFor(bool differs) { return differs ? "icnOptOn_Conflicts_1" : "icnOptOn_Conflicts_0"; }

}  // namespace

const std::array<ConflictRule, 6>& ConflictRules() {
  // The file-versus-folder rule goes ahead at tag 1, every other rule at tag 2.
  static const std::array<ConflictRule, 6> kRules{{
      {"Backup", " 1: ", "conflictBackupRadio", "conflictBackupAsk", kConflictRadioTag2,
       "Replace the changed destination file", "Skip the file"},
      {"Backup", " 2: ", "conflictBackupRadio2", "conflictBackupAsk2", kConflictRadioTag2,
       "Replace the newer destination file", "Skip the file"},
      {"Exact Backup", ": ", "conflictExactBackupRadio", "conflictExactBackupAsk", kConflictRadioTag2,
       "Delete the changed or added destination file", "Keep the destination file"},
      {"Sync", ": ", "conflictSyncRadio", "conflictSyncAsk", kConflictRadioTag2, "The newer file wins",
       "Skip both files"},
      {"Exact Sync", ": ", "conflictExactSyncRadio", "conflictExactSyncAsk", kConflictRadioTag2,
       "Delete the changed file anyway", "Copy the file back"},
      {"File Versus Folder", ": ", "conflictFileFolderRadio", "conflictFileFolderAsk", kConflictRadioTag1,
       "The file replaces the folder", "Skip both items"},
  }};
  return kRules;
}

std::string ConflictRadioTitle(const ConflictRule& rule, std::int64_t tag) {
  return GLS(tag == rule.goAheadTag ? rule.goAheadTitle : rule.skipTitle);
}

bool ConflictsDifferFromDefaults(const PlistDict& conflictsDict) {
  const PlistDict defaults = DefaultConflictsDict();
  for (const ConflictRule& rule : ConflictRules()) {
    if (conflictsDict.GetInt(rule.radioKey) != defaults.GetInt(rule.radioKey) || conflictsDict.IsFlagOn(rule.askKey)) return true;
  }
  return false;
}

void ConflictsPanel::SetPanels(const PlistDict& session) {
  const PlistDict& stored = ConflictsOf(session);
  mControls = PlistDict();
  for (const ConflictRule& rule : ConflictRules()) {
    mControls.Set(rule.radioKey, stored.GetInt(rule.radioKey));
    // A check box has two states: anything but 1 leaves it clear.
    mControls.Set(rule.askKey, stored.IsFlagOn(rule.askKey) ? 1 : 0);
  }
}

void ConflictsPanel::GetPanels(PlistDict& session) const { session.Set("conflictsDict", CurrentConflictsDict()); }

void ConflictsPanel::SetRadio(std::size_t rule, std::int64_t tag) {
  if (rule < ConflictRules().size()) mControls.Set(ConflictRules()[rule].radioKey, tag);
}

void ConflictsPanel::SetAsk(std::size_t rule, bool ask) {
  if (rule < ConflictRules().size()) mControls.Set(ConflictRules()[rule].askKey, ask ? 1 : 0);
}

std::string ConflictsPanel::SetIconOn(const PlistDict& session) {
  return IconNameFor(ConflictsDifferFromDefaults(ConflictsOf(session)));
}

std::string ConflictsPanel::IconName() const { return IconNameFor(ConflictsDifferFromDefaults(mControls)); }

std::string ConflictsPanel::GetLog(const PlistDict& session) {
  const PlistDict& rules = ConflictsOf(session);
  std::string log = "\r" + GLS("\xE2\x80\xA2 Conflict: ") + "\r";
  const std::string askTitle = GLS(kConflictAskTitle);
  for (const ConflictRule& rule : ConflictRules()) {
    log += "\t" + GLS(rule.logName) + rule.logSuffix + ConflictRadioTitle(rule, rules.GetInt(rule.radioKey)) + " - " +
           askTitle + ": " + GLS(rules.IsFlagOn(rule.askKey) ? "Yes" : "No") + "\r";
  }
  return log;
}

}  // namespace marigold
