// Names of the dated destination sub-folder, on a fixed clock, locale and time zone.
#include <gtest/gtest.h>

#include "model/document_model.h"
#include "options/session_switches.h"
#include "options/sub_folder_name.h"
#include "fixed_naming.h"
#include "util/quillon_additions.h"

namespace marigold {
namespace {

struct NameCase {
  const char* name;
  std::optional<std::string> source;
  std::int64_t kind;
  std::optional<std::string> format;
  std::optional<std::string> want;
  const char* locale = "en_US";
};

class SubFolderNames : public ::testing::TestWithParam<NameCase> {};

TEST_P(SubFolderNames, FromSourceKindAndFormat) {
  const NameCase& c = GetParam();
  EXPECT_EQ(GetDestSubFolderName(nullptr, 0, true, c.source, c.kind, c.format, Fixed(c.locale)), c.want);
}

INSTANTIATE_TEST_SUITE_P(
    Kinds, SubFolderNames,
    ::testing::Values(
        NameCase{"DefaultCustomFormatQuotesTheSource", "/Users/a/Photos", 0, kDefaultCustomNameFormat,
                 "Copy of Photos 03-05-2024 by Robin"},
        NameCase{"EverySourceMarkerIsReplaced", "/x/Docs", 0, "kSrc-kSrc yyyy", "Docs-Docs 2024"},
        NameCase{"FormatWithoutSourceIsOnlyADate", "/x/Docs", 0, "yyyy-MM-dd", "2024-03-05"},
        NameCase{"SourceLettersAreNotDateFields", "/x/yyyy MM", 0, "kSrc", "yyyy MM"},
        NameCase{"EmptyFormatNamesNothing", "/x/Docs", 0, "", ""},
        NameCase{"CustomWithoutAnyFormatIsEmpty", "/x/Docs", 0, std::nullopt, ""},
        NameCase{"SourceName", "/x/Docs/", 1, std::nullopt, "Docs"},
        NameCase{"RootIsTheStartupVolume", "/", 1, std::nullopt, "System Disk"},
        NameCase{"RootInsideACustomFormat", "/", 0, "kSrc yyyy", "System Disk 2024"},
        NameCase{"EmptySourceIsADash", "", 1, std::nullopt, "-"},
        NameCase{"Weekday", "/x", 2, std::nullopt, "Tuesday"},
        NameCase{"ShortWeekday", "/x", 3, std::nullopt, "Tue"},
        NameCase{"Month", "/x", 4, std::nullopt, "March"},
        NameCase{"ShortMonth", "/x", 5, std::nullopt, "Mar"},
        NameCase{"WeekdayInFrench", "/x", 2, std::nullopt, "mardi", "fr_FR"},
        NameCase{"MonthInGerman", "/x", 4, std::nullopt, "März", "de_DE"},
        NameCase{"KindSixNamesNothing", "/x", 6, std::nullopt, std::nullopt},
        NameCase{"Kind999NamesNothing", "/x", 999, std::nullopt, std::nullopt},
        NameCase{"NegativeKindNamesNothing", "/x", -1, std::nullopt, std::nullopt},
        NameCase{"FirstPopUpFormat", "/x", 1000, std::nullopt, "2024-03-05"},
        NameCase{"TagWithoutFormatNamesNothing", "/x", 5000, std::nullopt, std::nullopt}),
    [](const auto& info) { return std::string(info.param.name); });

TEST(SubFolderName, StatusOffIsEmptyWhateverTheKind) {
  for (std::int64_t kind : {0, 1, 2, 7, 1000})
    EXPECT_EQ(GetDestSubFolderName(nullptr, 0, false, "/x", kind, "yyyy", Fixed()), "") << kind;
}

TEST(SubFolderName, TheDayIsTheUsersDay) {
  // 19:07 UTC on the 5th is 04:07 on the 6th in Tokyo.
  SubFolderNaming tokyo = Fixed("en_US", "Asia/Tokyo");
  tokyo.now = DateFromUnixSeconds(1709647629 + 5 * 3600);
  EXPECT_EQ(GetDestSubFolderName(nullptr, 0, true, "/x", 1000, std::nullopt, tokyo), "2024-03-06");
  EXPECT_EQ(GetDestSubFolderName(nullptr, 0, true, "/x", 1000, std::nullopt, Fixed()), "2024-03-05");
}

TEST(SubFolderName, PopUpFormatsMakeFolderNames) {
  // Each format names a folder of one level: no "/" that would become ":", and never empty.
  for (std::int64_t tag = kSubFolderNameFirstFormat;; ++tag) {
    auto format = SubFolderDateFormat(tag);
    if (!format) break;
    auto name = GetDestSubFolderName(nullptr, 0, true, "/x", tag, std::nullopt, Fixed());
    ASSERT_TRUE(name.has_value());
    EXPECT_FALSE(name->empty()) << *format;
    EXPECT_EQ(name->find_first_of("/:"), std::string::npos) << *name;
  }
  EXPECT_FALSE(SubFolderDateFormat(kSubFolderNameFirstFormat - 1));
}

TEST(SubFolderName, WithoutSourceOrFormatTheCurrentEntryDecides) {
  PlistDict document = NewTemplate();
  PlistDict& sync = *GetSessionDict(document, 0);
  sync.GetDict("consoleDict")->Set("topFolder", "/home/robin/Music");
  sync.GetDict("settingsDict")->Set("settCreateDestFolderCustomNameFormat", "kSrc yyyy");
  PlistDict& backup = *GetSessionDict(document, 1);
  backup.GetDict("multiDict")->Set("multiOn", 1);
  const std::int64_t all = SessionCount(document) + 1;
  auto name = [&](std::int64_t index, std::int64_t kind) {
    return GetDestSubFolderName(&document, index, true, std::nullopt, kind, std::nullopt, Fixed());
  };
  EXPECT_EQ(name(0, 1), "Music");
  EXPECT_EQ(name(0, 0), "Music 2024");  // the session's own custom format
  EXPECT_EQ(name(1, 1), "(Multi)");
  EXPECT_EQ(name(all, 1), "(All)");
  EXPECT_EQ(name(all, 0), "");  // "All Sessions" has no format of its own
  EXPECT_EQ(name(7, 1), "-");   // no such session
}

TEST(SubFolderName, ForATaskFromTheSessionSwitches) {
  SessionSwitches switches;
  switches.gCreateDestFolder = true;
  switches.gCreateDestFolderNameKind = 0;
  switches.gCreateDestFolderCustomNameFormat = "'Backup of' kSrc dd.MM.yyyy";
  EXPECT_EQ(DestSubFolderNameForTask(switches, 0, "/srv/Photos", Fixed()), "Backup of Photos 05.03.2024");
  switches.gCreateDestFolder = false;
  EXPECT_EQ(DestSubFolderNameForTask(switches, 0, "/srv/Photos", Fixed()), "");
}

}  // namespace
}  // namespace marigold
