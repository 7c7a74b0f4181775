// Names as a terminal shows them, and the words of the replace prompt.
#include <gtest/gtest.h>

#include "engine/replace_prompt.h"
#include "engine/tree_text.h"

namespace marigold {
namespace {

TEST(PrintableName, KeepsTextAndShowsEveryOtherByte) {
  const std::pair<std::string, std::string> table[] = {
      {"plain.txt", "plain.txt"},
      {"caf\xC3\xA9 \xE6\x97\xA5\xE6\x9C\xAC \xF0\x9F\x8C\xBC", "caf\xC3\xA9 \xE6\x97\xA5\xE6\x9C\xAC \xF0\x9F\x8C\xBC"},
      {"new\nline", "new\\nline"},
      {"Icon\r", "Icon\\r"},
      {"tab\there", "tab\\there"},
      {"back\\slash", "back\\\\slash"},
      {std::string("nul\0x", 5), "nul\\x00x"},
      {"bell\x07", "bell\\x07"},
      {"latin1 \xE9t\xE9", "latin1 \\xE9t\\xE9"},
      {"cut \xE6\x97", "cut \\xE6\\x97"},
      {"overlong \xC0\xAF", "overlong \\xC0\\xAF"},
      {"surrogate \xED\xA0\x80", "surrogate \\xED\\xA0\\x80"},
      {"del\x7F", "del\\x7F"},
  };
  for (const auto& [name, shown] : table) EXPECT_EQ(PrintableName(name), shown);
}

struct PromptCase {
  const char* name;
  int conflict;
  int copyMode;
  bool directionChanged;
  const char* title;
  const char* replaceTitle;
  const char* skipTitle;
  const char* directionTooltip;
  bool canChangeDirection;
  bool showsSource;
  bool showsDest;
  const char* firstLine;
};

class ReplacePrompt : public ::testing::TestWithParam<PromptCase> {};

TEST_P(ReplacePrompt, WordsFollowTheConflictKind) {
  const PromptCase& c = GetParam();
  ReplaceRequest request{"/a/f", "/b/f", std::nullopt, c.copyMode, c.conflict, true};
  const ReplacePromptText prompt = BuildReplacePrompt(request, c.directionChanged);
  EXPECT_EQ(prompt.title, c.title);
  EXPECT_EQ(prompt.replaceTitle, c.replaceTitle);
  EXPECT_EQ(prompt.skipTitle, c.skipTitle);
  EXPECT_EQ(prompt.directionTooltip, c.directionTooltip);
  EXPECT_EQ(prompt.canChangeDirection, c.canChangeDirection);
  EXPECT_EQ(prompt.showsSource, c.showsSource);
  EXPECT_EQ(prompt.showsDest, c.showsDest);
  EXPECT_EQ(prompt.text.substr(0, prompt.text.find('\r')), c.firstLine);
}

INSTANTIATE_TEST_SUITE_P(
    Conflicts, ReplacePrompt,
    ::testing::Values(
        PromptCase{"BackupDestinationNewer", 12, 4, false, "Replace File", "Replace", "Skip",
                   "The source is going to replace the destination", false, true, true,
                   "The destination file has the most recent modification date/time."},
        PromptCase{"ExactSyncDeleteSource", 41, 6, false, "Delete File", "Delete", "Copy",
                   "The source file is going to be deleted", false, true, false, "Since the last Sync/Backup ()"},
        PromptCase{"FolderAgainstFile", 52, 5, false, "Replace folder", "Replace", "Skip", "", false, true, true,
                   "The source folder and the destination file have the same name."}),
    [](const auto& info) { return std::string(info.param.name); });

}  // namespace
}  // namespace marigold
