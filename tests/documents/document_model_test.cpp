#include "model/document_model.h"

#include <gtest/gtest.h>

namespace marigold {
namespace {

const std::vector<std::string> kNineSubDicts = {
    "consoleDict",   "timerDict",     "multiDict",       "filterDict",  "excludeDict",
    "conflictsDict", "autoMountDict", "appleScriptDict", "settingsDict"};

std::size_t Rows(const PlistDict& session, const char* dict, const char* list) {
  return session.GetDict(dict)->GetArray(list)->size();
}

TEST(NewTemplate, HasTwoFullSessionsWithTheirDefaults) {
  const PlistDict root = NewTemplate();
  EXPECT_EQ(root.Keys(), (std::vector<std::string>{"sessionsArray", "fileVersion", "sessionIndex"}));
  EXPECT_EQ(root.GetInt("fileVersion"), 420);
  ASSERT_EQ(SessionCount(root), 2);
  const std::pair<const char*, std::int64_t> expected[] = {{"Default Sync Session", 1},
                                                           {"Default Backup Session", 2}};
  for (int i = 0; i < 2; ++i) {
    const PlistDict& session = *GetSessionDict(root, i);
    EXPECT_EQ(session.Keys(), kNineSubDicts);
    EXPECT_EQ(session.GetDict("consoleDict")->GetString("sessionName"), expected[i].first);
    EXPECT_EQ(session.GetDict("settingsDict")->GetInt("settTask"), expected[i].second);
    EXPECT_EQ(Rows(session, "timerDict", "timerArray"), 32u);
    EXPECT_EQ(Rows(session, "multiDict", "multiArray"), 32u);
    EXPECT_EQ(Rows(session, "filterDict", "filterArray"), 32u);
    EXPECT_EQ(Rows(session, "excludeDict", "excludeArray"), 32u);
    EXPECT_EQ(Rows(session, "autoMountDict", "autoMountVolumeArray"), 64u);
    EXPECT_EQ(session.GetDict("conflictsDict")->GetInt("conflictFileFolderRadio"), 1);
  }

  const PlistDict& session = *GetSessionDict(root, 1);
  const PlistDict& timer = *session.GetDict("timerDict")->GetArray("timerArray")->back().AsDict();
  // 1 January 2004, 00:00 in Europe/Rome (UTC+1), in seconds since 2001-01-01 UTC.
  EXPECT_EQ(timer.GetDate("start"), PlistDate{94604400.0});
  EXPECT_EQ(timer.GetDate("end"), timer.GetDate("start"));
  const PlistDict& filter = *session.GetDict("filterDict")->GetArray("filterArray")->front().AsDict();
  EXPECT_EQ(filter.size(), 33u);
  EXPECT_EQ(filter.GetInt("filterCreationDateYear"), 2011);
  const PlistDict& volume =
      *session.GetDict("autoMountDict")->GetArray("autoMountVolumeArray")->front().AsDict();
  EXPECT_EQ(*volume.GetData("password"), PlistData());
  EXPECT_FALSE(volume.Contains("volumeIcon"));
  EXPECT_EQ(session.GetDict("settingsDict")->size(), 15u);
}

TEST(SessionIndex, AllSessionsIsCountPlusOneAndLookupsAreGuarded) {
  PlistDict root = NewTemplate();
  AddSession(1, "Third", root);
  EXPECT_FALSE(IsAllSessions(root, 3));
  EXPECT_TRUE(IsAllSessions(root, 4));
  EXPECT_EQ(GetSessionDict(root, 3), nullptr);
  EXPECT_EQ(GetSessionDict(root, -1), nullptr);

  PlistDict damaged{{"sessionsArray", PlistArray{PlistValue(5)}}};
  EXPECT_EQ(GetSessionDict(damaged, 0), nullptr);
  damaged.Set("sessionsArray", "not a list");
  AddSession(2, "Repaired", damaged);
  EXPECT_EQ(SessionCount(damaged), 1);
}

TEST(EnsureSessionName, NamesAnUnnamedSessionByItsNumberAndStoresIt) {
  PlistDict root = NewTemplate();
  AddSession(1, "x", root);
  GetSessionDict(root, 2)->GetDict("consoleDict")->Remove("sessionName");
  GetSessionDict(root, 1)->Remove("consoleDict");
  EXPECT_EQ(EnsureSessionName(root, 2), "Session 3");
  EXPECT_EQ(GetSessionDict(root, 2)->GetDict("consoleDict")->GetString("sessionName"), "Session 3");
  EXPECT_EQ(EnsureSessionName(root, 1), "Session 2");
  EXPECT_EQ(EnsureSessionName(root, 0), "Default Sync Session");
  EXPECT_EQ(EnsureSessionName(root, 9), "");
}

}  // namespace
}  // namespace marigold
