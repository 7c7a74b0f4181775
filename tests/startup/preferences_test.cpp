#include "app/preferences.h"

#include <gtest/gtest.h>

#include <cmath>

#include "app/app_paths.h"
#include "logging/email_account.h"
#include "support/temp_home.h"
#include "platform/plist_files.h"
#include "util/plist_io.h"
#include "util/quillon_additions.h"
#include "util/well_scramble.h"
#include "build_paths.h"

namespace marigold {
namespace {

using testing::Exists;
using testing::TempHome;

// A temporary home with its configuration folder, and the preferences file as a test sees it.
struct PrefsHome {
  TempHome home;
  AppPaths paths;
  PrefsHome() {
    std::filesystem::create_directories(home.Config());
    paths = MakeAppPaths("Log Files");
  }
  void Install(const std::string& fixture, const std::string& asPath) const {
    std::filesystem::copy_file(std::string(MARIGOLD_FIXTURES) + "/preferences/" + fixture, asPath);
  }
  // Reads with fresh preferences (not root) and returns what they hold.
  PlistDict Read(bool reset = false) const {
    Preferences prefs(paths, false);
    EXPECT_TRUE(prefs.ReadFilePreferences(reset));
    EXPECT_EQ(Stored(), prefs.dict()) << "the file holds what was read";
    return prefs.dict();
  }
  PlistDict Stored() const {
    auto file = ReadPlistDictFile(paths.preferencesFile);
    const PlistDict* stored = file ? file->GetDict(kPreferencesKey) : nullptr;
    return stored ? *stored : PlistDict();
  }
};

// Equal to the defaults, the check date being recent and the account the default one.
void ExpectDefaults(PlistDict prefs, const AppPaths& paths) {
  PlistDict defaults = GetDefaultPreferencesDict(paths.defaultLogFolder, false);
  ASSERT_TRUE(prefs.GetDate("prefUpdateLastCheckDate"));
  EXPECT_LT(std::abs(prefs.GetDate("prefUpdateLastCheckDate")->seconds - Now().seconds), 60.0);
  ASSERT_TRUE(prefs.GetData("prefSendEmailDict"));
  EXPECT_EQ(GetWellDict(*prefs.GetData("prefSendEmailDict")), GetSendEmailDefaultDict());
  for (PlistDict* dict : {&prefs, &defaults}) {
    dict->Remove("prefUpdateLastCheckDate");
    dict->Remove("prefSendEmailDict");
  }
  EXPECT_EQ(prefs, defaults);
}

TEST(GetDefaultPreferencesDict, TakesTheLogFolderAndTheRootFlagAndKeepsTheAccountScrambled) {
  PlistDict prefs = GetDefaultPreferencesDict("/logs", false);
  EXPECT_EQ(prefs.GetString("prefPathLogFolder"), "/logs");
  EXPECT_TRUE(prefs.Find("consOptionsDrawerWidth")->IsReal());
  EXPECT_EQ(GetDefaultPreferencesDict("/logs", true).GetInt("prefRoot"), 1);
  // The account is kept scrambled only.
  const PlistData* account = prefs.GetData("prefSendEmailDict");
  ASSERT_TRUE(account);
  EXPECT_EQ(std::string(account->begin(), account->end()).find("mSendEmailPassword"), std::string::npos);
}

TEST(ReadFilePreferences, NoFileOrAnUnreadableOneGivesDefaults) {
  for (const char* content : {static_cast<const char*>(nullptr), "garbage", "<?xml version=\"1.0\"?><plist><dict><key>", ""}) {
    PrefsHome h;
    if (content) h.home.Write(".config/com.quillon.Marigold.plist", content);
    ExpectDefaults(h.Read(), h.paths);
  }
}

TEST(ReadFilePreferences, Version300KeepsValuesLosesUnknownKeysGainsNewOnes) {
  PrefsHome h;
  h.Install("prefs_v300.plist", h.paths.preferencesFile);
  PlistDict p = h.Read();
  PlistDict want{
      {"versionPref", 411}, {"prefAskConfirmation", 0}, {"prefOnError", 1}, {"prefLogKind", 3},
      {"prefPathLogFolder", "/srv/marigold/logs"}, {"prefSaveLogFile", 1}, {"prefRoot", 0},
      {"prefSyncAndQuit", 0}, {"prefTabViewIdentifier", "General"}, {"prefModificationDelta", 0},
      {"prefModificationDeltaField", 10}, {"prefSchedulingWindowIsOpen", false},
      {"prefSettTabViewIdentifier", "General"}, {"prefShutDown", 0}, {"prefQuit", 0},
      {"prefDeleteLogsOn", false}, {"prefDeleteLogsPop", 0}, {"prefDeleteLogsField", 7},
      {"prefPreviewExpanded", 0}, {"prefSendEmailDict", p.Find("prefSendEmailDict") ? *p.Find("prefSendEmailDict") : PlistValue()},
      {"versionApp", 501000}};
  EXPECT_EQ(p, want) << "unknown keys gone, the rest kept, missing ones added; others stay missing";
  ASSERT_TRUE(p.GetData("prefSendEmailDict"));
  EXPECT_EQ(GetWellDict(*p.GetData("prefSendEmailDict")), GetSendEmailDefaultDict());
}

TEST(ReadFilePreferences, Version300WithTheDeleteSwitchGetsNoCount) {
  PrefsHome h;
  h.Install("prefs_v300_delete_switch.plist", h.paths.preferencesFile);  // a binary file
  PlistDict p = h.Read();
  EXPECT_EQ(p.GetInt("prefDeleteLogsOn"), 1);
  EXPECT_FALSE(p.Contains("prefDeleteLogsField"));
  EXPECT_FALSE(p.Contains("prefDeleteLogsPop"));
}

TEST(ReadFilePreferences, Version411KeepsEverythingButTheRootFlag) {
  PrefsHome h;
  h.Install("prefs_v411.plist", h.paths.preferencesFile);
  PlistDict before = h.Stored();
  for (bool isRoot : {false, true}) {
    Preferences prefs(h.paths, isRoot);
    ::chmod(h.paths.preferencesFile.c_str(), 0644);
    ASSERT_TRUE(prefs.ReadFilePreferences(false));
    // Root leaves the file writable for the user's own later instance.
    EXPECT_EQ(testing::ModeOf(h.paths.preferencesFile), isRoot ? 0777u : 0644u);
    PlistDict got = prefs.dict();
    // The fixture has no account (its script cannot scramble one): the default is added.
    ASSERT_TRUE(got.GetData("prefSendEmailDict"));
    got.Remove("prefSendEmailDict");
    PlistDict want = before;
    want.Set("prefRoot", isRoot ? 1 : 0);
    EXPECT_EQ(got, want) << "root " << isRoot;
  }
}

TEST(ReadFilePreferences, NewerVersionlessOrResetEntriesBecomeDefaults) {
  for (const char* fixture : {"prefs_v412.plist", "prefs_v411.plist"}) {
    PrefsHome h;
    h.Install(fixture, h.paths.preferencesFile);
    ExpectDefaults(h.Read(/*reset=*/std::string(fixture) == "prefs_v411.plist"), h.paths);
  }
  PrefsHome h;
  ASSERT_TRUE(WriteXmlPlistFile(SystemFileSystem(), h.paths.preferencesFile, PlistDict{{kPreferencesKey, PlistDict{{"prefOnError", 1}}}}));
  ExpectDefaults(h.Read(), h.paths);
  // fileVersion stands in for a missing versionPref.
  PrefsHome old;
  old.Install("prefs_fileversion_only.plist", old.paths.preferencesFile);
  PlistDict p = old.Read();
  EXPECT_EQ(p.GetInt("prefOnError"), 2);
  EXPECT_FALSE(p.Contains("fileVersion"));
}

TEST(ReadFilePreferences, ThePreviousVersionsFileIsTakenOnceAndBothOldFilesGo) {
  struct Case { const char* fixture; std::int64_t onError, beep; };
  for (const Case& c : {Case{"old_prefs_private_entry.plist", 1, 1}, Case{"old_prefs_whole_file.plist", 2, 0},
                        Case{nullptr, 3, 0}}) {
    SCOPED_TRACE(c.fixture ? c.fixture : "no previous file");
    PrefsHome h;
    if (c.fixture) h.Install(c.fixture, h.paths.previousPrefsFile);
    h.home.Write(".config/Marigold.plist", "older");
    PlistDict p = h.Read();
    EXPECT_EQ(p.GetInt("prefOnError"), c.onError);
    EXPECT_EQ(p.GetInt("prefBeepWhenDone"), c.beep);
    EXPECT_FALSE(p.Contains("SomethingElse"));
    EXPECT_FALSE(Exists(h.paths.previousPrefsFile));
    EXPECT_FALSE(Exists(h.paths.olderPrefsFile));
  }
  // The current file comes first: the old ones are neither read nor deleted.
  PrefsHome h;
  h.Install("prefs_v411.plist", h.paths.preferencesFile);
  h.Install("old_prefs_whole_file.plist", h.paths.previousPrefsFile);
  EXPECT_EQ(h.Read().GetInt("prefLogKind"), 1);
  EXPECT_TRUE(Exists(h.paths.previousPrefsFile));
}

TEST(WriteFilePreferences, KeepsTheFilesOtherKeysInPlace) {
  PrefsHome h;
  h.Install("prefs_v411.plist", h.paths.preferencesFile);
  Preferences prefs(h.paths, false);
  ASSERT_TRUE(prefs.ReadFilePreferences(false));
  prefs.dict().Set("prefOnError", 1);
  ASSERT_TRUE(prefs.WriteFilePreferences(false));
  auto file = ReadPlistDictFile(h.paths.preferencesFile);
  ASSERT_TRUE(file);
  EXPECT_EQ(file->Keys(),
            (std::vector<std::string>{"NSWindow Frame ConsoleWindowFrame", "MGPrivatePreferences", "NSRecentDocuments"}));
  EXPECT_EQ(file->GetString("NSWindow Frame ConsoleWindowFrame"), "100 200 640 480 0 0 1920 1080 ");
  EXPECT_EQ(h.Stored().GetInt("prefOnError"), 1);
}

TEST(WriteFilePreferences, StampsVersionsAndStoresWindowStateOnlyWhenAsked) {
  PrefsHome h;
  Preferences prefs(h.paths, false);
  EXPECT_FALSE(prefs.WriteFilePreferences(false)) << "nothing held yet";
  EXPECT_FALSE(Exists(h.paths.preferencesFile));

  WindowState state{true, true, false, 212.5};
  prefs.SetDict(PlistDict{{"versionPref", 300}, {"versionApp", 400000}});
  ASSERT_TRUE(prefs.WriteFilePreferences(false, state));
  EXPECT_EQ(h.Stored(), (PlistDict{{"versionPref", 411}, {"versionApp", 501000}}));

  prefs.SetDict(PlistDict{{"versionApp", 700000}});
  ASSERT_TRUE(prefs.WriteFilePreferences(true, state));
  EXPECT_EQ(h.Stored(), (PlistDict{{"versionApp", 700000}, {"prefSchedulingWindowIsOpen", 1},
                                   {"consInfoDrawerIsOpen", 1}, {"consOptionsDrawerIsOpen", 0},
                                   {"consOptionsDrawerWidth", 212.5}, {"versionPref", 411}}));
}

}  // namespace
}  // namespace marigold
