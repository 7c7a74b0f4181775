#include "options/session_switches.h"

namespace marigold {
namespace {

const PlistDict& SubDict(const PlistDict& session, std::string_view key) {
  static const PlistDict kEmpty;
  const PlistDict* dict = session.GetDict(key);
  return dict ? *dict : kEmpty;
}

bool IsTag(const PlistDict& dict, std::string_view key, std::int64_t tag) { return dict.GetInt(key) == tag; }

constexpr const char* kFilterCriteria[] = {
    "filterFileNameOn", "filterCreationDateOn", "filterModificationDateOn",
    "filterFileSizeOn", "filterTypeOn",         "filterCreatorOn",
    "filterKindOn",     "filterOwnerOn",        "filterGroupOn",
};

bool RowIsOn(const PlistDict& row) { return row.GetInt("onOff") != 0; }

}  // namespace

void ReadSessionSwitches(const PlistDict& session, SessionSwitches& switches) {
  switches.gIsTimerOn = SubDict(session, "timerDict").IsFlagOn("timerOn");
  switches.gIsMultiOn = SubDict(session, "multiDict").IsFlagOn("multiOn");
  switches.gIsFilterOn = SubDict(session, "filterDict").IsFlagOn("filterOn") && !ExecutiveFilterArray(session).empty();
  switches.gIsExcludeOn =
      SubDict(session, "excludeDict").IsFlagOn("excludeOn") && !ExecutiveExcludeArray(session).empty();
  const PlistDict& settings = SubDict(session, "settingsDict");
  switches.gIsInvisibleOn = settings.IsFlagOn("settInvisibleItems");
  switches.gIsResolveAliasOn = settings.IsFlagOn("settResolveAlias");
  switches.gIsResolveSymLinkOn = settings.IsFlagOn("settResolveSymLink");
  switches.gIsSkipEmptyFolders = settings.IsFlagOn("settSkipEmptyFolders");
  switches.gIsTreatPackagesAsFolders = settings.IsFlagOn("settPackagesFolders");
  switches.gIsNewItemsOnly = settings.IsFlagOn("settNewItemsOnly");
}

void ReadTaskSettings(const PlistDict& session, SessionSwitches& switches) {
  const PlistDict& settings = SubDict(session, "settingsDict");
  switches.gIsSyncOn = settings.IsFlagOn("settTask");
  switches.gIsExactOn = settings.IsFlagOn("settExact");
  switches.gIsMoveToTrash = settings.IsFlagOn("settMoveToTrash");
  switches.gIsUnlockOn = settings.IsFlagOn("settLockedItems");
  switches.mSkipCheckPermissions = settings.IsFlagOn("settSkipCheckPermissions");
  switches.gCheckAttrChanged = settings.IsFlagOn("settCheckAttrChanged");
  switches.gCreateDestFolder = settings.IsFlagOn("settCreateDestFolder");
  switches.gCreateDestFolderNameKind = settings.GetInt("settCreateDestFolderNameKind", 1);
  switches.gCreateDestFolderCustomNameFormat = settings.GetString("settCreateDestFolderCustomNameFormat");
}

void ReadConflictRules(const PlistDict& session, SessionSwitches& switches) {
  // A missing conflictsDict key reads as 0: every radio off (skip), every ask off.
  const PlistDict& rules = SubDict(session, "conflictsDict");
  switches.gIsConflictBackupRadio = IsTag(rules, "conflictBackupRadio", 2);
  switches.gIsConflictBackupAsk = IsTag(rules, "conflictBackupAsk", 1);
  switches.gIsConflictBackupRadio2 = IsTag(rules, "conflictBackupRadio2", 2);
  switches.gIsConflictBackupAsk2 = IsTag(rules, "conflictBackupAsk2", 1);
  switches.gIsConflictExactBackupRadio = IsTag(rules, "conflictExactBackupRadio", 2);
  switches.gIsConflictExactBackupAsk = IsTag(rules, "conflictExactBackupAsk", 1);
  switches.gIsConflictSyncRadio = IsTag(rules, "conflictSyncRadio", 2);
  switches.gIsConflictSyncAsk = IsTag(rules, "conflictSyncAsk", 1);
  switches.gIsConflictExactSyncRadio = IsTag(rules, "conflictExactSyncRadio", 2);
  switches.gIsConflictExactSyncAsk = IsTag(rules, "conflictExactSyncAsk", 1);
  switches.gIsConflictFileFolderRadio = IsTag(rules, "conflictFileFolderRadio", 1);
  switches.gIsConflictFileFolderAsk = IsTag(rules, "conflictFileFolderAsk", 1);
}

PlistArray ExecutiveFilterArray(const PlistDict& session) {
  PlistArray rows;
  const PlistArray* all = SubDict(session, "filterDict").GetArray("filterArray");
  if (all == nullptr) return rows;
  for (const PlistValue& value : *all) {
    const PlistDict* row = value.AsDict();
    if (row == nullptr || !RowIsOn(*row)) continue;
    for (const char* criterion : kFilterCriteria) {
      if (row->IsFlagOn(criterion)) {
        rows.push_back(*row);
        break;
      }
    }
  }
  return rows;
}

PlistArray ExecutiveExcludeArray(const PlistDict& session) {
  PlistArray paths;
  const PlistArray* all = SubDict(session, "excludeDict").GetArray("excludeArray");
  if (all == nullptr) return paths;
  for (const PlistValue& value : *all) {
    const PlistDict* row = value.AsDict();
    if (row == nullptr || !RowIsOn(*row)) continue;
    std::string path = row->GetString("itemToExclude");
    if (!path.empty()) paths.push_back(std::move(path));
  }
  return paths;
}

}  // namespace marigold
