#include <gtest/gtest.h>

#include "logging/log_window.h"
#include "logging/rtf_text.h"
#include "platform/file_system.h"
#include "support/temp_folder.h"

namespace marigold {
namespace {

const std::string kText = "ab\r\t\u221A e1\r\tok\r\u221A e2\rend";

struct FindCase {
  std::size_t start, length;
  bool previous;
  std::optional<std::size_t> want;
};

TEST(LogWindow, FindErrorStepsAndWrapsAround) {
  const std::size_t first = kText.find("\u221A"), second = kText.rfind("\u221A");
  const FindCase cases[] = {
      {0, 0, false, first},
      {first, kLogErrorMarker.size(), false, second},
      {second, kLogErrorMarker.size(), false, first},              // wraps to the start
      {second, kLogErrorMarker.size(), true, first},
      {first, kLogErrorMarker.size(), true, second},               // wraps to the end
      {kText.size(), 0, false, first},
      {0, 0, true, second},
  };
  for (const FindCase& c : cases)
    EXPECT_EQ(LogFindError(kText, c.start, c.length, c.previous), c.want) << c.start << " " << c.previous;
  EXPECT_EQ(LogFindError("no errors\r", 0, 0, false), std::nullopt);
  // The only marker, selected, finds no other.
  EXPECT_EQ(LogFindError("\u221A one", 0, kLogErrorMarker.size(), false), std::nullopt);
}

TEST(LogWindow, FillsFromTextRtfOrTheLastRun) {
  TempFolder folder;
  FileSystem& fs = SystemFileSystem();
  const std::string txt = folder.WriteFile("MGLog_1.txt", kText);
  const std::string rtf = folder.WriteFile("MGLog_2.rtf", MakeRtfDocument(kText));
  const std::string bad = folder.WriteFile("MGLog_3.rtf", "not rtf");

  LogWindowContent content = FillLogWindow(fs, txt, "");
  EXPECT_EQ(content.source, LogWindowSource::kFile);
  EXPECT_EQ(content.title, txt);
  EXPECT_EQ(content.text, kText);
  EXPECT_EQ(FillLogWindow(fs, rtf, "").text, kText);
  EXPECT_EQ(FillLogWindow(fs, bad, "").alert, "Can't open this Log file.");
  content = FillLogWindow(fs, folder.Join("missing.txt"), "last run");
  EXPECT_EQ(content.source, LogWindowSource::kLastRunText);
  EXPECT_EQ(content.title, "Log Window");
  EXPECT_EQ(content.text, "last run");
  EXPECT_FALSE(FillLogWindow(fs, folder.Join("missing.txt"), "").ok());
  EXPECT_FALSE(FillLogWindow(fs, folder.Path(), "").ok());  // a folder is no log
}

}  // namespace
}  // namespace marigold
