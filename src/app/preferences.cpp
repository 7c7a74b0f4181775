#include "app/preferences.h"

#include <cmath>

#include "logging/email_account.h"
#include "platform/plist_files.h"
#include "util/quillon_additions.h"
#include "util/well_scramble.h"

namespace marigold {

PlistDict GetDefaultPreferencesDict(const std::string& defaultLogFolder, bool isRoot) {
  return PlistDict{
      {"versionPref", kVersionPref},
      {"versionApp", kVersionApp},
      {"prefSyncAndQuit", 0},
      {"prefAskConfirmation", 1},
      {"prefPreview", 0},
      {"prefPreviewExpanded", 0},
      {"prefBeepWhenDone", 0},
      {"prefShutDown", 0},
      {"prefQuit", 0},
      {"prefOnError", 3},
      {"prefSaveLogFile", 0},
      {"prefSaveLogFileWhen", 2},
      {"prefLogFileFormat", 1},
      {"prefLogKind", 2},
      {"prefPathLogFolder", defaultLogFolder},
      {"prefDeleteLogsOn", 0},
      {"prefDeleteLogsPop", 0},
      {"prefDeleteLogsField", 7},
      {"prefSendEmail", 0},
      {"prefSendEmailWhen", 2},
      // The account holds a password: it is only ever kept scrambled.
      {"prefSendEmailDict", SetWellDict(GetSendEmailDefaultDict())},
      {"prefRoot", isRoot ? 1 : 0},
      {"prefModificationDelta", 0},
      {"prefModificationDeltaField", 10},
      {"prefUpdateFrequency", 0},
      // Whole seconds, as the file keeps them, so what is held equals what is read back.
      {"prefUpdateLastCheckDate", PlistDate{std::floor(Now().seconds)}},
      {"prefTabViewIdentifier", "General"},
      {"prefSettTabViewIdentifier", "General"},
      {"prefSchedulingWindowIsOpen", 0},
      {"consInfoDrawerIsOpen", 0},
      {"consOptionsDrawerIsOpen", 0},
      // No program here has an options drawer whose width could be measured yet.
      {"consOptionsDrawerWidth", 0.0},
  };
}

Preferences::Preferences(AppPaths paths, bool isRoot, FileSystem& fs)
    : mPaths(std::move(paths)), mIsRoot(isRoot), mFs(fs) {}

PlistDict& Preferences::dict() {
  if (!mPrefs) mPrefs.emplace();
  return *mPrefs;
}

const PlistDict& Preferences::dict() const {
  static const PlistDict kEmpty;
  return mPrefs ? *mPrefs : kEmpty;
}

void Preferences::InitPreferences() {
  mPrefs = GetDefaultPreferencesDict(mPaths.defaultLogFolder, mIsRoot);
}

std::optional<PlistDict> Preferences::FindStoredPreferences(bool writes) {
  mFileAsRead = ReadPlistDictFile(mFs, mPaths.preferencesFile);
  if (mFileAsRead) {
    if (const PlistDict* stored = mFileAsRead->GetDict(kPreferencesKey)) return *stored;
  }
  // The platform's per-user defaults database, the next place the original looked, has no
  // counterpart on Linux; the previous version's own file follows directly.
  std::optional<PlistDict> found;
  if (auto previous = ReadPlistDictFile(mFs, mPaths.previousPrefsFile)) {
    if (const PlistDict* stored = previous->GetDict(kPreviousPreferencesKey)) found = *stored;
    else found = std::move(previous);
  }
  // Once the search has come this far the old files have served their purpose, found or not.
  if (writes) {
    mFs.RemoveItem(mPaths.previousPrefsFile);
    mFs.RemoveItem(mPaths.olderPrefsFile);
  }
  return found;
}

bool Preferences::ReadFilePreferences(bool reset, bool writes) {
  mFileAsRead.reset();
  if (reset) {
    InitPreferences();
    mFileAsRead = ReadPlistDictFile(mFs, mPaths.preferencesFile);
  } else if (auto stored = FindStoredPreferences(writes)) {
    mPrefs = std::move(*stored);
    UpdatePreferences();
  } else {
    InitPreferences();
  }
  if (!writes) return true;
  const std::optional<PlistDict> file = std::move(mFileAsRead);
  mFileAsRead.reset();
  return WriteOver(file);
}

void Preferences::UpdatePreferences() {
  if (!mPrefs) return InitPreferences();
  PlistDict& prefs = *mPrefs;
  const PlistValue* version = prefs.Find("versionPref");
  if (!version) version = prefs.Find("fileVersion");
  if (!version) return InitPreferences();
  // A number that is not one (a string, a dictionary) cannot say which rules apply.
  std::int64_t number = version->NumberOr(kVersionPref + 1);
  if (number > kVersionPref) return InitPreferences();

  PlistDict defaults = GetDefaultPreferencesDict(mPaths.defaultLogFolder, mIsRoot);
  for (const std::string& key : prefs.Keys()) {
    if (!defaults.Contains(key)) prefs.Remove(key);
  }
  prefs.Set("prefRoot", mIsRoot ? 1 : 0);
  setObjectNotInList(prefs, "prefSyncAndQuit", 0);
  setObjectNotInList(prefs, "prefTabViewIdentifier", "General");
  setObjectNotInList(prefs, "prefModificationDelta", 0);
  setObjectNotInList(prefs, "prefModificationDeltaField", 10);
  setObjectNotInList(prefs, "prefSchedulingWindowIsOpen", false);
  setObjectNotInList(prefs, "prefSettTabViewIdentifier", "General");
  setObjectNotInList(prefs, "prefShutDown", 0);
  setObjectNotInList(prefs, "prefQuit", 0);
  // The three delete-log settings arrived together; a file that has the switch keeps its own
  // count and period, even when they are missing.
  if (!prefs.Contains("prefDeleteLogsOn")) {
    prefs.Set("prefDeleteLogsOn", false);
    prefs.Set("prefDeleteLogsPop", 0);
    prefs.Set("prefDeleteLogsField", 7);
  }
  setObjectNotInList(prefs, "prefPreviewExpanded", 0);
  setObjectNotInList(prefs, "prefSchedulingWindowIsOpen", false);
  setObjectNotInList(prefs, "prefSendEmailDict", SetWellDict(GetSendEmailDefaultDict()));
}

bool Preferences::WriteFilePreferences(bool withWindowState, const WindowState& state) {
  if (!mPrefs) return false;
  PlistDict& prefs = *mPrefs;
  if (withWindowState) {
    prefs.Set("prefSchedulingWindowIsOpen", state.schedulingWindowIsOpen ? 1 : 0);
    prefs.Set("consInfoDrawerIsOpen", state.infoDrawerIsOpen ? 1 : 0);
    prefs.Set("consOptionsDrawerIsOpen", state.optionsDrawerIsOpen ? 1 : 0);
    prefs.Set("consOptionsDrawerWidth", state.optionsDrawerWidth);
  }
  return WriteOver(ReadPlistDictFile(mFs, mPaths.preferencesFile));
}

bool Preferences::WriteOver(const std::optional<PlistDict>& stored) {
  PlistDict& prefs = *mPrefs;
  prefs.Set("versionPref", kVersionPref);
  if (prefs.GetInt("versionApp") <= kVersionApp - 1) prefs.Set("versionApp", kVersionApp);
  PlistDict file = stored.value_or(PlistDict());
  file.Set(kPreferencesKey, prefs);
  // Every command starts by reading the preferences; a file that already says the same is left
  // alone, so a look at the folders (a dry run) changes nothing, and two fsyncs are saved.
  if (stored && *stored == file) return true;
  if (!WriteXmlPlistFile(mFs, mPaths.preferencesFile, file)) return false;
  // A root instance writes the user's own file; the user's next ordinary instance must still be
  // able to rewrite it.
  if (mIsRoot) mFs.SetMode(mPaths.preferencesFile, 0777);
  return true;
}

}  // namespace marigold
