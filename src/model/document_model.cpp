#include "model/document_model.h"

#include "util/quillon_additions.h"
#include "util/strings_table.h"

namespace marigold {

PlistDict DefaultConflictsDict() {
  // New sessions take file/folder conflicts with rule 1, every other rule with 2 (upgraded
  // documents get 2 for file/folder on purpose); nothing is asked.
  return PlistDict{
      {"conflictBackupRadio", 2},      {"conflictBackupAsk", 0},      {"conflictBackupRadio2", 1},
      {"conflictBackupAsk2", 0},       {"conflictExactBackupRadio", 2}, {"conflictExactBackupAsk", 0},
      {"conflictSyncRadio", 2},        {"conflictSyncAsk", 0},        {"conflictExactSyncRadio", 2},
      {"conflictExactSyncAsk", 0},     {"conflictFileFolderRadio", 1}, {"conflictFileFolderAsk", 0},
  };
}

PlistDict DefaultSettingsDict(std::int64_t task) {
  // settInvisibleItems and settLockedItems are stored inverted: 1 means the box is clear.
  return PlistDict{
      {"settTask", task},
      {"settExact", 0},
      {"settInvisibleItems", 1},
      {"settLockedItems", 1},
      {"settResolveAlias", 0},
      {"settResolveSymLink", 0},
      {"settSkipEmptyFolders", 0},
      {"settNewItemsOnly", 0},
      {"settPackagesFolders", 0},
      {"settMoveToTrash", 0},
      {"settCheckAttrChanged", 0},
      {"settCreateDestFolder", 0},
      {"settCreateDestFolderNameKind", 1},
      {"settCreateDestFolderCustomNameFormat", kDefaultCustomNameFormat},
      {"settSkipCheckPermissions", 0},
  };
}

namespace {

PlistArray RowsOf(const PlistDict& row, int count) {
  return PlistArray(static_cast<std::size_t>(count), PlistValue(row));
}

}  // namespace

PlistDict NewTemplate() {
  PlistDict root;
  root.Set("sessionsArray", PlistArray());
  root.Set("fileVersion", kFileVersion);
  AddSession(1, GLS("Default Sync Session"), root);
  AddSession(2, GLS("Default Backup Session"), root);
  root.Set("sessionIndex", 0);
  return root;
}

void AddSession(std::int64_t task, const std::string& name, PlistDict& root) {
  PlistArray* sessions = root.GetArray("sessionsArray");
  if (sessions == nullptr) {
    root.Set("sessionsArray", PlistArray());
    sessions = root.GetArray("sessionsArray");
  }
  sessions->push_back(DefaultSessionDict(task, name));
}

PlistDict DefaultSessionDict(std::int64_t task, const std::string& name) {
  PlistDict session;
  session.Set("consoleDict", PlistDict{{"sessionName", name}, {"topFolder", ""}, {"bottomFolder", ""}});
  session.Set("timerDict",
              PlistDict{{"timerOn", 0},
                        {"timerArray", RowsOf(DefaultTimerRow(DefaultTimerStartDate()), kFixedRowCount)}});
  session.Set("multiDict",
              PlistDict{{"multiOn", 0}, {"multiArray", RowsOf(DefaultMultiRow(), kFixedRowCount)}});
  session.Set("filterDict", PlistDict{{"filterOn", 0},
                                      {"filterCopySkip", 2},
                                      {"filterArray", RowsOf(DefaultFilterRow(), kFixedRowCount)}});
  session.Set("excludeDict",
              PlistDict{{"excludeOn", 0}, {"excludeArray", RowsOf(DefaultExcludeRow(), kFixedRowCount)}});
  if (PlistDict conflicts = DefaultConflictsDict(); !conflicts.empty()) {
    session.Set("conflictsDict", std::move(conflicts));
  }
  session.Set("autoMountDict",
              PlistDict{{"autoMountVolumeOn", 0},
                        {"autoMountVolumeArray", RowsOf(DefaultVolumeRow(), kVolumeRowCount)}});
  session.Set("appleScriptDict", PlistDict{{"asStartOn", 0},
                                           {"asStartText", kDefaultScriptText},
                                           {"asEndOn", 0},
                                           {"asEndText", kDefaultScriptText}});
  if (PlistDict settings = DefaultSettingsDict(task); !settings.empty()) {
    session.Set("settingsDict", std::move(settings));
  }
  return session;
}

const PlistDict* GetSessionDict(const PlistDict& root, std::int64_t index) {
  const PlistArray* sessions = root.GetArray("sessionsArray");
  if (sessions == nullptr || index < 0 || index >= static_cast<std::int64_t>(sessions->size())) {
    return nullptr;
  }
  return (*sessions)[static_cast<std::size_t>(index)].AsDict();
}

PlistDict* GetSessionDict(PlistDict& root, std::int64_t index) {
  return const_cast<PlistDict*>(GetSessionDict(static_cast<const PlistDict&>(root), index));
}

std::int64_t SessionCount(const PlistDict& root) {
  const PlistArray* sessions = root.GetArray("sessionsArray");
  return sessions == nullptr ? 0 : static_cast<std::int64_t>(sessions->size());
}

bool IsAllSessions(const PlistDict& root, std::int64_t index) {
  return index == SessionCount(root) + 1;
}

PlistDate DefaultTimerStartDate() {
  // A fixed local date; the format always matches, the fallback only guards a broken clock API.
  return DateFromStrptime("01 01 2004, 00:00", "%d %m %Y, %H:%M").value_or(PlistDate{});
}

PlistDict DefaultTimerRow(PlistDate startAndEnd) {
  return PlistDict{
      {"valid", 0},          {"onOff", 1},           {"start", startAndEnd},
      {"intervalOn", 0},     {"intervalHours", 0},   {"intervalMinutes", 0},
      {"intervalDays", 0},   {"intervalMonths", 0},  {"intervalYears", 0},
      {"endOn", 0},          {"endDateOn", 0},       {"end", startAndEnd},
      {"onlyMonday", 1},     {"onlyTuesday", 1},     {"onlyWednesday", 1},
      {"onlyThursday", 1},   {"onlyFriday", 1},      {"onlySaturday", 1},
      {"onlySunday", 1},
  };
}

PlistDict DefaultMultiRow() {
  return PlistDict{{"onOff", 1}, {"source", ""}, {"destination", ""}};
}

PlistDict DefaultFilterRow() {
  // Filter dates are three integers; the year is the fixed 2011, not the current one.
  return PlistDict{
      {"onOff", 1},
      {"filterNameField", ""},
      {"filterFileNameOn", 0},
      {"filterFileNamePop", 0},
      {"filterFileNameField", ""},
      {"filterCreationDateOn", 0},
      {"filterCreationDatePop", 0},
      {"filterCreationDateMonth", 1},
      {"filterCreationDateDay", 1},
      {"filterCreationDateYear", 2011},
      {"filterModificationDateOn", 0},
      {"filterModificationDatePop", 0},
      {"filterModificationDateMonth", 1},
      {"filterModificationDateDay", 1},
      {"filterModificationDateYear", 2011},
      {"filterFileSizeOn", 0},
      {"filterFileSizePop", 0},
      {"filterFileSizeField", 0},
      {"filterFileSizeBytesPop", 0},
      {"filterTypeOn", 0},
      {"filterTypePop", 0},
      {"filterTypeField", ""},
      {"filterCreatorOn", 0},
      {"filterCreatorPop", 0},
      {"filterCreatorField", ""},
      {"filterKindOn", 0},
      {"filterKindPop", 0},
      {"filterOwnerOn", 0},
      {"filterOwnerPop", 0},
      {"filterOwnerField", ""},
      {"filterGroupOn", 0},
      {"filterGroupPop", 0},
      {"filterGroupField", ""},
  };
}

PlistDict DefaultExcludeRow() {
  return PlistDict{{"onOff", 1}, {"itemToExclude", ""}};
}

PlistDict DefaultVolumeRow() {
  // volumeIcon, diskID, dmgPath and aliasData are absent until set (the upgrade adds volumeIcon).
  return PlistDict{
      {"onOff", 1},       {"scheme", ""},     {"user", ""},
      {"password", PlistData()},              {"host", ""},
      {"path", ""},       {"mountPoint", ""}, {"unmountVolume", 1},
      {"volumeType", 0},
  };
}

std::string EnsureSessionName(PlistDict& root, std::int64_t index) {
  PlistDict* session = GetSessionDict(root, index);
  if (session == nullptr) return "";
  if (const PlistDict* console = session->GetDict("consoleDict")) {
    if (const PlistValue* name = console->Find("sessionName"); name && name->IsString()) {
      return *name->AsString();
    }
  }
  // The localised pattern keeps its printf-style placeholder, as the language tables write it.
  std::string name = GLS("Session %ld");
  if (const auto at = name.find("%ld"); at != std::string::npos) {
    name.replace(at, 3, std::to_string(index + 1));
  }
  PlistDict* console = session->GetDict("consoleDict");
  if (console == nullptr) {
    session->Set("consoleDict", PlistDict());
    console = session->GetDict("consoleDict");
  }
  console->Set("sessionName", name);
  return name;
}

}  // namespace marigold
