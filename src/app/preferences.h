// The application preferences: defaults, the preferences file and its predecessors, the upgrade
// of older entries, and the write at launch, after the panel and at quit.
//
// The file keeps our dictionary under "MGPrivatePreferences" and may hold other keys, which every
// write carries over untouched. A file that cannot be read, or that a newer program wrote, gives
// the defaults; the file is always replaced atomically, so it is never left half-written.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "app/app_paths.h"
#include "platform/file_system.h"
#include "util/plist_value.h"

namespace marigold {

inline constexpr std::int64_t kVersionPref = 411;
inline constexpr std::int64_t kVersionApp = 501000;
inline constexpr const char* kPreferencesKey = "MGPrivatePreferences";
inline constexpr const char* kPreviousPreferencesKey = "privateAppPref";

// Every preference with its default, in the documented order. prefSendEmailDict holds the
// scrambled default account; prefUpdateLastCheckDate is now.
PlistDict GetDefaultPreferencesDict(const std::string& defaultLogFolder, bool isRoot);

// Window state stored at quit; the desktop program fills it, the command line has none.
struct WindowState {
  bool schedulingWindowIsOpen = false;
  bool infoDrawerIsOpen = false;
  bool optionsDrawerIsOpen = false;
  double optionsDrawerWidth = 0.0;
};

class Preferences {
 public:
  // Every file is read and written through `fs`.
  Preferences(AppPaths paths, bool isRoot, FileSystem& fs = SystemFileSystem());

  // Loads the stored dictionary (or the defaults when `reset` or when none is found), upgrades
  // it, and writes the file back when that changes it. Returns the write's result. With
  // `writes` false (a dry run) nothing on disk changes: the upgraded dictionary is only held.
  bool ReadFilePreferences(bool reset, bool writes = true);
  // Upgrades the held dictionary in place; older entries lose unknown keys and gain new ones,
  // entries of version 412 or more, or without any version, become the defaults.
  void UpdatePreferences();
  // Replaces the held dictionary with the defaults.
  void InitPreferences();
  // Stamps the versions and writes the held dictionary under "MGPrivatePreferences", keeping the
  // file's other keys; with `withWindowState` also stores `state`. False when nothing is held or
  // the write fails. Gives the file mode 0777 when running as root.
  bool WriteFilePreferences(bool withWindowState, const WindowState& state = {});

  bool HasPreferences() const { return mPrefs.has_value(); }
  // The held dictionary; empty until read or initialised.
  PlistDict& dict();
  const PlistDict& dict() const;
  void SetDict(PlistDict prefs) { mPrefs = std::move(prefs); }

  const AppPaths& paths() const { return mPaths; }

 private:
  std::optional<PlistDict> FindStoredPreferences(bool writes);
  // Writes the held dictionary into `stored` (the file as it is now) unless that already holds it.
  bool WriteOver(const std::optional<PlistDict>& stored);

  AppPaths mPaths;
  bool mIsRoot;
  FileSystem& mFs;
  std::optional<PlistDict> mPrefs;
  // The preferences file as ReadFilePreferences found it, so that its write-back need not read
  // it a second time.
  std::optional<PlistDict> mFileAsRead;
};

}  // namespace marigold
