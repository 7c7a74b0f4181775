#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/time.h>

#include <cstdlib>
#include <filesystem>
#include <set>

#include "logging/log_files.h"
#include "logging/log_window.h"
#include "platform/file_system.h"
#include "support/temp_folder.h"

namespace marigold {
namespace {

constexpr double kNow = 1709647629;

void SetModified(const std::string& path, double seconds) {
  const timeval times[2] = {{static_cast<time_t>(seconds), 0}, {static_cast<time_t>(seconds), 0}};
  ASSERT_EQ(::utimes(path.c_str(), times), 0);
}

std::set<std::string> Names(const std::string& folder) {
  std::set<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(folder)) names.insert(entry.path().filename());
  return names;
}

PlistDict Prefs(const std::string& folder, std::int64_t when = 1, std::int64_t format = 2) {
  return PlistDict{{"prefSaveLogFile", 1}, {"prefSaveLogFileWhen", when}, {"prefLogFileFormat", format},
                   {"prefPathLogFolder", folder}, {"prefDeleteLogsOn", 0}, {"prefDeleteLogsPop", 0},
                   {"prefDeleteLogsField", 7}};
}

TEST(LogFiles, SavesAsTheFormatSaysAndOnlyOnErrorsWhenAsked) {
  TempFolder temp;
  std::vector<std::string> reported;
  const auto report = [&](const std::string& message) { reported.push_back(message); };
  PlistDict prefs = Prefs(temp.Join("logs"), 2);
  LogFiles files(SystemFileSystem(), prefs, "");
  const std::string log = "\u2022 Errors: 1\r\u221A Can't copy \"caf\xe9\"\r";
  EXPECT_EQ(files.SaveLogFileToDisk(log, 0, "MGLog_a.txt", kNow, report), std::nullopt);
  EXPECT_FALSE(std::filesystem::exists(temp.Join("logs")));
  EXPECT_EQ(files.SaveLogFileToDisk(log, 1, "MGLog_a.txt", kNow, report), temp.Join("logs/MGLog_a.txt"));
  EXPECT_EQ(temp.ReadFile("logs/MGLog_a.txt"), "\u2022 Errors: 1\n\u221A Can't copy \"caf\xe9\"\n");
  prefs.Set("prefLogFileFormat", 1);
  ASSERT_TRUE(files.SaveLogFileToDisk(log, 1, "MGLog_b.rtf", kNow, report));
  EXPECT_EQ(ReadLogFileText(SystemFileSystem(), temp.Join("logs/MGLog_b.rtf")), log);
  EXPECT_TRUE(reported.empty());
}

TEST(LogFiles, AFileInPlaceOfTheFolderGoesAndAFolderThatCannotBeMadeFallsBack) {
  TempFolder temp;
  std::vector<std::string> reported;
  const auto report = [&](const std::string& message) { reported.push_back(message); };
  temp.WriteFile("logs", "not a folder");
  PlistDict prefs = Prefs(temp.Join("logs"));
  LogFiles files(SystemFileSystem(), prefs, temp.Join("fallback"));
  EXPECT_TRUE(files.SaveLogFileToDisk("log\r", 0, "MGLog_a.txt", kNow, report));
  EXPECT_TRUE(std::filesystem::is_directory(temp.Join("logs")));
  // The file it replaced is in the trash, not gone.
  bool trashed = false;
  const std::string trash = std::string(std::getenv("XDG_DATA_HOME")) + "/Trash/files/logs";
  for (const std::string& place : {trash, temp.Join(".Trash-0/files/logs")}) trashed = trashed || temp.ReadFile(place) == "not a folder";
  EXPECT_TRUE(trashed);

  temp.WriteFile("file", "x");
  prefs.Set("prefPathLogFolder", temp.Join("file/inside"));
  EXPECT_EQ(files.SaveLogFileToDisk("log\r", 0, "MGLog_b.txt", kNow, report), temp.Join("fallback/MGLog_b.txt"));
  EXPECT_EQ(prefs.GetString("prefPathLogFolder"), temp.Join("fallback"));

  prefs.Set("prefPathLogFolder", temp.Join("file/inside"));
  LogFiles noFallback(SystemFileSystem(), prefs, temp.Join("file/too"));
  EXPECT_FALSE(noFallback.SaveLogFileToDisk("log\r", 0, "MGLog_c.txt", kNow, report));
  ASSERT_EQ(reported.size(), 1u);
  EXPECT_EQ(reported[0], "Can't save the log file because I can't create the folder \"" + temp.Join("file/too") + "\"");
}

TEST(LogFiles, PruneByAgeKeepsALogExactlyNDaysOld) {
  TempFolder temp;
  PlistDict prefs = Prefs(temp.Path());
  const std::pair<const char*, double> files[] = {
      {"MGLog_exactly7.txt", kNow - 7 * 86400}, {"MGLog_older.txt", kNow - 7 * 86400 - 1},
      {"MGLog_new.rtf", kNow}, {"notes.txt", kNow - 100 * 86400}, {"MGLog_not_a_log", kNow - 30 * 86400}};
  for (const auto& [name, date] : files) SetModified(temp.WriteFile(name, "x"), date);
  LogFiles(SystemFileSystem(), prefs, "").RemoveLastLogFiles(kNow);
  EXPECT_EQ(Names(temp.Path()), (std::set<std::string>{"MGLog_exactly7.txt", "MGLog_new.rtf", "notes.txt"}));
}

TEST(LogFiles, PruneByCountKeepsTheNewestAndEveryOtherFile) {
  TempFolder temp;
  PlistDict prefs = Prefs(temp.Path());
  prefs.Set("prefDeleteLogsPop", 1);
  prefs.Set("prefDeleteLogsField", 3);
  for (int i = 1; i <= 5; ++i) SetModified(temp.WriteFile("MGLog_" + std::to_string(i) + ".txt", "x"), kNow - 1000 * (6 - i));
  SetModified(temp.WriteFile("other.txt", "x"), kNow - 1e6);
  LogFiles(SystemFileSystem(), prefs, "").RemoveLastLogFiles(kNow);
  EXPECT_EQ(Names(temp.Path()), (std::set<std::string>{"MGLog_3.txt", "MGLog_4.txt", "MGLog_5.txt", "other.txt"}));
}

}  // namespace
}  // namespace marigold
