#include "app/document_upgrade.h"

#include <array>
#include <optional>
#include <set>
#include <string>
#include <string_view>

#include "model/document_model.h"
#include "app/icon_shrink.h"
#include "util/quillon_additions.h"

namespace marigold {
namespace {

// Which flat keys of a document up to 402 belong to which sub-dictionary.
struct SubDictKeys {
  const char* dictKey;
  std::vector<const char*> keys;
};

const std::vector<SubDictKeys>& FlatKeyLayout() {
  static const std::vector<SubDictKeys> layout = {
      {"consoleDict", {"sessionName", "topFolder", "bottomFolder"}},
      {"timerDict", {"timerOn", "timerArray"}},
      {"multiDict", {"multiOn", "multiArray"}},
      {"filterDict", {"filterOn", "filterCopySkip", "filterArray"}},
      {"excludeDict", {"excludeOn", "excludeArray"}},
      {"conflictsDict",
       {"conflictBackupRadio", "conflictBackupAsk", "conflictBackupRadio2", "conflictBackupAsk2",
        "conflictExactBackupRadio", "conflictExactBackupAsk", "conflictSyncRadio", "conflictSyncAsk",
        "conflictExactSyncRadio", "conflictExactSyncAsk"}},
      {"autoMountDict", {"autoMountVolumeOn", "autoMountVolumeArray"}},
      {"appleScriptDict", {"asStartOn", "asStartText", "asEndOn", "asEndText"}},
      {"settingsDict",
       {"settTask", "settExact", "settInvisibleItems", "settLockedItems", "settResolveAlias",
        "settResolveSymLink", "settSkipEmptyFolders", "settNewItemsOnly", "settPackagesFolders",
        "settMoveToTrash", "settCheckAttrChanged"}},
  };
  return layout;
}

// Each list of a session: the sub-dictionary that holds it, its key, and its default row.
struct ListShape {
  const char* dictKey;
  const char* listKey;
  PlistDict (*defaultRow)();
};

PlistDict TimerRowAtDefaultDate() { return DefaultTimerRow(DefaultTimerStartDate()); }

constexpr std::array<ListShape, 5> kListShapes = {{
    {"timerDict", "timerArray", TimerRowAtDefaultDate},
    {"multiDict", "multiArray", DefaultMultiRow},
    {"filterDict", "filterArray", DefaultFilterRow},
    {"excludeDict", "excludeArray", DefaultExcludeRow},
    {"autoMountDict", "autoMountVolumeArray", DefaultVolumeRow},
}};

// Calls `visit` on every row of `list` in `dict` that is a dictionary.
template <typename Visit>
void ForEachRow(PlistDict& dict, std::string_view list, Visit visit) {
  PlistArray* rows = dict.GetArray(list);
  if (rows == nullptr) return;
  for (PlistValue& row : *rows) {
    if (PlistDict* rowDict = row.AsDict()) visit(*rowDict);
  }
}

PlistDict& SubDict(PlistDict& session, std::string_view key) {
  if (session.GetDict(key) == nullptr) session.Set(key, PlistDict());
  return *session.GetDict(key);
}

void UpgradeFilterKind(PlistDict& session) {
  ForEachRow(session, "filterArray", [](PlistDict& row) {
    if (!row.Contains("filterKindOn") || !row.Contains("filterKindPop")) {
      row.Set("filterKindOn", 0);
      row.Set("filterKindPop", 0);
    }
  });
}

// Documents before 320 had other timer and conflict models: both start again from defaults.
void ResetPre320Options(PlistDict& session, PlistDate now) {
  session.Set("timerArray", PlistArray(kFixedRowCount, PlistValue(DefaultTimerRow(now))));
  session.Set("timerOn", 0);
  for (const char* list : {"multiArray", "filterArray", "excludeArray"}) {
    PlistArray* rows = session.GetArray(list);
    if (rows == nullptr) continue;
    const std::size_t count = std::min<std::size_t>(rows->size(), kFixedRowCount);
    for (std::size_t i = 0; i < count; ++i) {
      PlistDict* row = (*rows)[i].AsDict();
      if (row != nullptr && !row->IsFlagOn("onOff")) row->Set("onOff", 0);
    }
  }
  session.Set("conflictBackupRadio", 2);
  session.Set("conflictBackupAsk", 0);
  session.Set("conflictExactBackupRadio", 2);
  session.Set("conflictExactBackupAsk", 0);
  session.Set("conflictSyncRadio", 2);
  session.Set("conflictSyncAsk", 0);
  if (const PlistValue* checkBackupDate = session.Find("settCheckBackupDate")) {
    if (checkBackupDate->NumberOr(-1) == 0) session.Set("conflictSyncRadio", 1);
    session.Remove("settCheckBackupDate");
  }
  session.Set("conflictExactSyncRadio", 2);
  session.Set("conflictExactSyncAsk", 0);
  session.Set("settMoveToTrash", 0);
}

// Volume lists before 403 had no host; such a list is replaced, not converted.
void UpgradeAutoMount(PlistDict& session) {
  setObjectNotInList(session, "autoMountVolumeOn", 0);
  const PlistArray* rows = session.GetArray("autoMountVolumeArray");
  const PlistDict* first = (rows != nullptr && !rows->empty()) ? rows->front().AsDict() : nullptr;
  if (first != nullptr && first->Contains("host")) return;
  session.Set("autoMountVolumeOn", 0);
  PlistDict row = DefaultVolumeRow();
  row.Set("volumeIcon", PlistData());
  session.Set("autoMountVolumeArray", PlistArray(kVolumeRowCount, PlistValue(row)));
}

void UpgradeScripts(PlistDict& session) {
  if (session.Contains("asStartOn")) return;
  session.Set("asStartOn", 0);
  session.Set("asStartText", kDefaultScriptText);
  session.Set("asEndText", kDefaultScriptText);
  session.Set("asEndOn", 0);
}

void UpgradeOverride(PlistDict& session) {
  if (session.Contains("conflictBackupRadio2")) return;
  session.Set("conflictBackupRadio2", 1);
  session.Set("conflictBackupAsk2", 0);
  if (const PlistValue* override = session.Find("settOverride")) {
    if (override->NumberOr(0) == 1) session.Set("conflictBackupRadio2", 2);
    session.Remove("settOverride");
  }
}

void UpgradeFilterOwnerGroupSize(PlistDict& session) {
  ForEachRow(session, "filterArray", [](PlistDict& row) {
    if (!row.Contains("filterOwnerOn")) {
      row.Set("filterOwnerOn", 0);
      row.Set("filterOwnerPop", 0);
      row.Set("filterOwnerField", "");
    }
    if (!row.Contains("filterGroupOn")) {
      row.Set("filterGroupOn", 0);
      row.Set("filterGroupPop", 0);
      row.Set("filterGroupField", "");
    }
    if (!row.Contains("filterFileSizeOn")) {
      row.Set("filterFileSizeOn", 0);
      row.Set("filterFileSizePop", 0);
      row.Set("filterFileSizeField", 0);
      row.Set("filterFileSizeBytesPop", 0);
    }
  });
}

void Restructure(PlistDict& session) {
  for (const SubDictKeys& group : FlatKeyLayout()) {
    // Built apart from the session: removing keys from it would move its entries in memory.
    PlistDict target;
    if (PlistDict* existing = session.GetDict(group.dictKey)) target = std::move(*existing);
    for (const char* key : group.keys) MoveObjectForKey(session, key, target);
    session.Set(group.dictKey, std::move(target));
  }
  PlistDict& settings = SubDict(session, "settingsDict");
  setObjectNotInList(settings, "settMoveToTrash", 0);
  setObjectNotInList(settings, "settCheckAttrChanged", 0);
  // The old permission options are dropped, not converted.
  for (const char* key : {"settCPOn", "settCPPopGroup", "settCPPopOthers", "settCPPopOwner"}) {
    session.Remove(key);
  }
}

void UpgradeVolumeIcons(PlistArray& rows) {
  for (PlistValue& value : rows) {
    PlistDict* row = value.AsDict();
    const PlistData* icon = row != nullptr ? row->GetData("volumeIcon") : nullptr;
    if (icon == nullptr) continue;
    if (std::optional<PlistData> shrunk = ShrinkIconData(*icon)) row->Set("volumeIcon", std::move(*shrunk));
  }
}

void SetFileFolderConflictRule(PlistDict& session) {
  if (PlistDict* conflicts = session.GetDict("conflictsDict")) {
    conflicts->Set("conflictFileFolderRadio", 2);
    conflicts->Set("conflictFileFolderAsk", 0);
  }
}

void UpgradeSession(PlistDict& session, std::int64_t version, PlistDate now) {
  if (version <= 402) {
    setObjectNotInList(session, "settSkipEmptyFolders", 0);
    UpgradeFilterKind(session);
    setObjectNotInList(session, "settPackagesFolders", 0);
    if (version <= 319) ResetPre320Options(session, now);
    UpgradeAutoMount(session);
    UpgradeScripts(session);
    UpgradeOverride(session);
    UpgradeFilterOwnerGroupSize(session);
    Restructure(session);
  }
  if (version <= 403) {
    if (PlistDict* settings = session.GetDict("settingsDict")) {
      setObjectNotInList(*settings, "settCreateDestFolder", 0);
      setObjectNotInList(*settings, "settCreateDestFolderNameKind", 1);
      setObjectNotInList(*settings, "settCreateDestFolderCustomNameFormat", kDefaultCustomNameFormat);
    }
  }
  if (version <= 409) {
    if (PlistDict* settings = session.GetDict("settingsDict")) {
      setObjectNotInList(*settings, "settSkipCheckPermissions", 0);
    }
  }
  if (version <= 410) {
    PlistDict* autoMount = session.GetDict("autoMountDict");
    if (autoMount == nullptr) {
      SetFileFolderConflictRule(session);
      return;
    }
    if (PlistArray* rows = autoMount->GetArray("autoMountVolumeArray")) {
      RemoveDuplicateVolumeRows(*rows);
      UpgradeVolumeIcons(*rows);
    }
  }
  // Upgraded documents get 2 here while new sessions get 1; the difference is intended.
  if (version <= 419) SetFileFolderConflictRule(session);
}

}  // namespace

bool HasUsableSessions(const PlistDict& root) {
  const PlistArray* sessions = root.GetArray("sessionsArray");
  if (sessions == nullptr || sessions->empty()) return false;
  for (const PlistValue& session : *sessions) {
    if (!session.IsDict()) return false;
  }
  return true;
}

void RemoveDuplicateVolumeRows(PlistArray& rows) {
  std::set<std::string> seen;
  for (std::size_t i = rows.size(); i-- > 0;) {
    const PlistDict* row = rows[i].AsDict();
    if (row == nullptr) continue;
    const std::string scheme = row->GetString("scheme");
    const std::string host = row->GetString("host");
    if (scheme.empty() || host.empty() || !row->Contains("mountPoint")) continue;
    const std::string key = scheme + "://" + host + row->GetString("mountPoint");
    if (!seen.insert(key).second) rows.erase(rows.begin() + static_cast<std::ptrdiff_t>(i));
  }
}

void RepairSessionShape(PlistDict& session) {
  // The defaults are built only for a damaged session: a whole session is thousands of values.
  std::optional<PlistDict> defaults;
  auto defaultOf = [&](std::string_view key) -> const PlistDict& {
    if (!defaults) {
      // Backup never writes to side A: the safer task for a session whose settings are lost.
      defaults = DefaultSessionDict(2, "");
      defaults->GetDict("consoleDict")->Remove("sessionName");
    }
    return *defaults->GetDict(key);
  };
  for (const SubDictKeys& group : FlatKeyLayout()) {
    const PlistValue* present = session.Find(group.dictKey);
    if (present != nullptr && !present->IsDict()) session.Set(group.dictKey, defaultOf(group.dictKey));
  }
  for (const ListShape& shape : kListShapes) {
    PlistDict* dict = session.GetDict(shape.dictKey);
    const PlistValue* list = dict != nullptr ? dict->Find(shape.listKey) : nullptr;
    if (list == nullptr) continue;
    if (!list->IsArray()) {
      dict->Set(shape.listKey, *defaultOf(shape.dictKey).Find(shape.listKey));
      continue;
    }
    for (PlistValue& row : *dict->GetArray(shape.listKey)) {
      if (!row.IsDict()) row = shape.defaultRow();
    }
  }
}

bool UpgradeDocument(PlistDict& root, std::int64_t version, PlistDate now) {
  if (!HasUsableSessions(root)) return false;
  const std::int64_t count = SessionCount(root);
  const PlistValue* indexValue = root.Find("sessionIndex");
  if (indexValue != nullptr && (!indexValue->IsInteger() || *indexValue->AsInteger() < 0)) {
    root.Set("sessionIndex", 0);
  }
  const std::int64_t index = root.GetInt("sessionIndex");
  if (!IsAllSessions(root, index) && index >= count) root.Set("sessionIndex", count - 1);

  for (PlistValue& value : *root.GetArray("sessionsArray")) {
    PlistDict& session = *value.AsDict();
    UpgradeSession(session, version, now);
    RepairSessionShape(session);
  }
  return true;
}

}  // namespace marigold
