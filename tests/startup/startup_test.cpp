#include "app/startup.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <functional>

#include "app/app_paths.h"
#include "support/as_user.h"
#include "support/temp_home.h"
#include "util/strings_table.h"
#include "build_paths.h"

namespace marigold {
namespace {

using testing::Exists;
using testing::ModeOf;
using testing::ReadText;
using testing::TempHome;

StartupOptions EnglishOnly() {
  StartupOptions options;
  options.resourceFolders = {MARIGOLD_SOURCE_RESOURCES};
  options.languages = {"en"};
  options.skipSystemCheck = true;
  return options;
}

bool IsDir(const std::string& path) { return std::filesystem::is_directory(path); }

TEST(MakeAppPaths, FollowsXdgWhenAbsoluteAndHomeOtherwise) {
  TempHome home;
  home.SetEnv("XDG_CONFIG_HOME", "/elsewhere/conf/");
  home.SetEnv("XDG_DATA_HOME", "relative/data");  // ignored: not absolute
  AppPaths paths = MakeAppPaths("Log Files");
  EXPECT_EQ(paths.preferencesFile, "/elsewhere/conf/com.quillon.Marigold.plist");
  EXPECT_EQ(paths.previousIndexFolder, "/elsewhere/conf/Marigold 3.0 ExactSync Indexes");
  EXPECT_EQ(paths.exactSyncIndexFolder, home.Support() + "/ExactSync Indexes");
  EXPECT_EQ(paths.defaultLogFolder, home.Support() + "/Log Files");
}

TEST(InitVariables, FreshHomeGetsItsFoldersAndTheEnglishTable) {
  TempHome home;
  StartupResult result = InitVariables(EnglishOnly());
  ASSERT_TRUE(result.ok) << result.fatalMessage;
  EXPECT_TRUE(IsDir(home.Support()));
  EXPECT_TRUE(IsDir(home.Config()));
  EXPECT_FALSE(Exists(home.PreviousSupport()));
  EXPECT_EQ(result.stringTablePath, std::string(MARIGOLD_SOURCE_RESOURCES) + "/en.lproj/Localizable.strings");
  EXPECT_EQ(result.logWords.itemsToDo, "Items to do: %d");
}

TEST(InitVariables, TheLanguageTableDecidesTheLogFolderNameAndEnglishIsTheLastResort) {
  TempHome home;
  home.Write("res/fr.lproj/Localizable.strings", "\"Log Files\" = \"Journaux\";\n");
  StartupOptions options = EnglishOnly();
  options.resourceFolders = {home.home() + "/res", MARIGOLD_SOURCE_RESOURCES};
  options.languages = {"xx", "fr"};
  StartupResult french = InitVariables(options);
  ASSERT_TRUE(french.ok) << french.fatalMessage;
  EXPECT_EQ(french.paths.defaultLogFolder, home.Support() + "/Journaux");
  options.languages = {"xx", "de"};  // neither has a table, and "en" is not listed
  StartupResult english = InitVariables(options);
  ASSERT_TRUE(english.ok) << english.fatalMessage;
  EXPECT_NE(english.stringTablePath.find("/en.lproj/"), std::string::npos);
  EXPECT_EQ(english.paths.defaultLogFolder, home.Support() + "/Log Files");
}

TEST(InitVariables, CopiesThePreviousSupportFolderWithItsModes) {
  TempHome home;
  home.Write(".local/share/Quillon/Marigold 3/ExactSync Indexes/MG3ExactSyncMainIndex.plist", "index");
  std::string secret = home.Write(".local/share/Quillon/Marigold 3/notes/secret.txt", "kept");
  ::chmod(secret.c_str(), 0640);
  ::chmod((home.PreviousSupport() + "/notes").c_str(), 0550);
  ASSERT_EQ(::symlink("notes/secret.txt", (home.PreviousSupport() + "/link").c_str()), 0);

  StartupResult result = InitVariables(EnglishOnly());
  ASSERT_TRUE(result.ok) << result.fatalMessage;
  EXPECT_EQ(ReadText(home.Support() + "/ExactSync Indexes/MG3ExactSyncMainIndex.plist"), "index");
  EXPECT_EQ(ReadText(home.Support() + "/notes/secret.txt"), "kept");
  EXPECT_EQ(ModeOf(home.Support() + "/notes/secret.txt"), 0640u);
  EXPECT_EQ(ModeOf(home.Support() + "/notes"), 0550u);
  EXPECT_EQ(std::filesystem::read_symlink(home.Support() + "/link"), "notes/secret.txt");
  EXPECT_EQ(ReadText(secret), "kept") << "the previous folder stays";
  // Nothing but the two support folders: no temporary copy is left.
  auto entries = std::distance(std::filesystem::directory_iterator(home.home() + "/.local/share/Quillon"),
                               std::filesystem::directory_iterator());
  EXPECT_EQ(entries, 2);
}

TEST(InitVariables, AnExistingSupportFolderLeavesThePreviousOneAlone) {
  TempHome home;
  home.Write(".local/share/Quillon/Marigold 4/mine.txt", "new");
  home.Write(".local/share/Quillon/Marigold 3/old.txt", "old");
  ASSERT_TRUE(InitVariables(EnglishOnly()).ok);
  EXPECT_FALSE(Exists(home.Support() + "/old.txt"));
  EXPECT_EQ(ReadText(home.Support() + "/mine.txt"), "new");
  EXPECT_EQ(ReadText(home.PreviousSupport() + "/old.txt"), "old");
}

TEST(InitVariables, AFailedCopyOfThePreviousFolderIsIgnoredAndLeavesNoHalfCopy) {
  TempHome home;
  home.Write(".local/share/Quillon/Marigold 3/readable.txt", "a");
  home.Write(".local/share/Quillon/Marigold 3/locked/inside.txt", "b");
  ::chmod((home.PreviousSupport() + "/locked").c_str(), 0000);
  ::chmod(home.root().c_str(), 0755);
  // Root reads everything, so an unreadable folder needs someone else.
  auto start = [&] {
    StartupResult result = InitVariables(EnglishOnly());
    if (!result.ok) return std::string("failed");
    if (!IsDir(home.Support())) return std::string("no folder");
    return std::string(Exists(home.Support() + "/readable.txt") ? "half copy" : "");
  };
  if (::geteuid() == 0) GiveTree(home.home(), 54321);
  EXPECT_EQ(::geteuid() == 0 ? OutputAsUser(54321, start) : start(), "");
}

TEST(InitVariables, SettlesTheIndexFolder) {
  TempHome home;
  // A file where the folder belongs goes, and the previous version's folder moves in.
  home.Write(".local/share/Quillon/Marigold 4/ExactSync Indexes", "not a folder");
  home.Write(".config/Marigold 3.0 ExactSync Indexes/MG3ExactSyncMainIndex.plist", "main");
  ASSERT_TRUE(InitVariables(EnglishOnly()).ok);
  EXPECT_EQ(ReadText(home.Support() + "/ExactSync Indexes/MG3ExactSyncMainIndex.plist"), "main");
  EXPECT_FALSE(Exists(home.Config() + "/Marigold 3.0 ExactSync Indexes"));
  // Once there, the folder is kept even when an old one shows up again.
  home.Write(".config/Marigold 3.0 ExactSync Indexes/old.plist", "old");
  ASSERT_TRUE(InitVariables(EnglishOnly()).ok);
  EXPECT_FALSE(Exists(home.Support() + "/ExactSync Indexes/old.plist"));
  EXPECT_TRUE(Exists(home.Support() + "/ExactSync Indexes/MG3ExactSyncMainIndex.plist"));
}

TEST(InitVariables, StopsWithTheExactTexts) {
  auto cannotCreate = [](const std::string& path) {
    return "Cannot create the folder\r\"" + path +
           "\".\rCannot run.\rPlease be sure that each folder (if existing) on the pathname above "
           "has got Read&Write privileges for the current user.";
  };
  const std::string noHome = "Cannot find the folder (Home)/Library.\rCannot run.";
  struct Case {
    const char* name;
    std::function<std::string(TempHome&)> arrange;  // returns the expected text
  };
  const std::vector<Case> cases{
      {"HomeMissing", [&](TempHome& h) { h.SetEnv("HOME", h.root() + "/nobody"); return noHome; }},
      {"HomeIsAFile",
       [&](TempHome& h) { h.SetEnv("HOME", h.Write("file", "x")); return noHome; }},
      {"DataFolderIsAFile",
       [&](TempHome& h) {
         h.SetEnv("XDG_DATA_HOME", h.Write("datafile", "x"));
         return cannotCreate(h.home() + "/datafile/Quillon/Marigold 4");
       }},
      {"ConfigFolderIsAFile",
       [&](TempHome& h) {
         h.SetEnv("XDG_CONFIG_HOME", h.Write("conffile", "x"));
         return cannotCreate(h.home() + "/conffile");
       }},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    TempHome home;
    std::string want = c.arrange(home);
    StartupResult result = InitVariables(EnglishOnly());
    EXPECT_FALSE(result.ok);
    EXPECT_EQ(result.fatalTitle, "Warning:");
    EXPECT_EQ(result.fatalMessage, want);
  }
  TempHome home;
  StartupOptions options = EnglishOnly();
  options.resourceFolders = {home.home() + "/no-resources"};
  EXPECT_EQ(InitVariables(options).fatalMessage,
            "Can't find the file \"Localizable.strings\" inside the application package.\r"
            "Please reinstall a new copy of the program.");
}

}  // namespace
}  // namespace marigold
