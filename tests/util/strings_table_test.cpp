#include "util/strings_table.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <thread>

#include "support/temp_folder.h"
#include "support/temp_home.h"
#include "build_paths.h"

namespace marigold {
namespace {

std::string Utf16Bytes(std::u16string_view text, bool bigEndian, bool mark) {
  std::string out;
  auto put = [&](char16_t unit) {
    const char hi = static_cast<char>(unit >> 8), lo = static_cast<char>(unit & 0xFF);
    out += bigEndian ? std::string{hi, lo} : std::string{lo, hi};
  };
  if (mark) put(u'\xFEFF');
  for (char16_t unit : text) put(unit);
  return out;
}

TEST(ParseStringsFile, PairsCommentsAndEscapes) {
  const std::string text =
      "/* header\n   comment */\n"
      "\"Warning:\" = \"Avertissement :\";  // trailing comment\n"
      "\"Line\\rbreak\" = \"a\\tb\\n\\\"q\\\" \\\\ \\U00e9\\U00E8\";\n"
      "\"Emoji\" = \"\\Ud83d\\Ude00\";\n"
      "\"Same\";\n"
      "bare.key = \"x\";\n"
      "\"Warning:\" = \"Attention\";\n"
      "\"multi\nline\" = \"ok\";";
  std::string error;
  std::optional<StringTable> table = ParseStringsFile(text, &error);
  ASSERT_TRUE(table) << error;
  EXPECT_EQ(*table, (StringTable{{"Warning:", "Attention"},  // a repeated key: the last one wins
                                 {"Line\rbreak", "a\tb\n\"q\" \\ \xC3\xA9\xC3\xA8"},
                                 {"Emoji", "\xF0\x9F\x98\x80"},
                                 {"Same", "Same"},
                                 {"bare.key", "x"},
                                 {"multi\nline", "ok"}}));
}

TEST(ParseStringsFile, Utf16WithEitherByteOrder) {
  const std::u16string text = u"\"Cancel\" = \"Annuler \u00e9\U0001F600\";";
  const StringTable want{{"Cancel", "Annuler \xC3\xA9\xF0\x9F\x98\x80"}};
  EXPECT_EQ(ParseStringsFile(Utf16Bytes(text, false, true)), want);
  EXPECT_EQ(ParseStringsFile(Utf16Bytes(text, true, true)), want);
  EXPECT_EQ(ParseStringsFile(Utf16Bytes(text, true, false)), want);
  EXPECT_EQ(ParseStringsFile("\xEF\xBB\xBF\"a\" = \"b\";"), (StringTable{{"a", "b"}}));
  EXPECT_EQ(ParseStringsFile(""), StringTable{});
}

TEST(ParseStringsFile, RefusesBrokenTables) {
  const std::pair<const char*, std::string> cases[] = {
      {"MissingSemicolon", "\"a\" = \"b\"\n\"c\" = \"d\";"},
      {"MissingEquals", "\"a\" \"b\";"},
      {"UnterminatedString", "\"a\" = \"b;"},
      {"UnterminatedComment", "\"a\" = \"b\"; /* open"},
      {"BadHexEscape", "\"a\" = \"\\U00g1\";"},
      {"LoneSurrogate", "\"a\" = \"\\UD83D\";"},
      {"InvalidUtf8", "\"a\" = \"\xC3\x28\";"},
      {"OddUtf16", std::string("\xFF\xFE\x22", 3)},
      {"UnpairedUtf16", Utf16Bytes(u"\"a\" = \"\xD800\";", false, true)},
  };
  for (const auto& [name, bytes] : cases) {
    std::string error;
    EXPECT_EQ(ParseStringsFile(bytes, &error), std::nullopt) << name;
    EXPECT_FALSE(error.empty()) << name;
  }
  std::string error;
  ParseStringsFile("\"a\" = \"b\";\n\n\"c\" = ;", &error);
  EXPECT_EQ(error.rfind("line 3", 0), 0u) << error;
}

struct LanguageCase {
  const char* name;
  const char *language, *all, *messages, *lang;
  std::vector<std::string> want;
};

class PreferredLanguagesFrom : public ::testing::TestWithParam<LanguageCase> {};

TEST_P(PreferredLanguagesFrom, Environment) {
  const LanguageCase& c = GetParam();
  testing::TempHome env;  // puts the variables back afterwards
  const char* names[] = {"LANGUAGE", "LC_ALL", "LC_MESSAGES", "LANG"};
  const char* values[] = {c.language, c.all, c.messages, c.lang};
  for (int i = 0; i < 4; ++i) env.SetEnv(names[i], values[i] ? std::optional<std::string>(values[i]) : std::nullopt);
  EXPECT_EQ(PreferredLanguages(), c.want);
}

INSTANTIATE_TEST_SUITE_P(
    Locale, PreferredLanguagesFrom,
    ::testing::Values(
        LanguageCase{"NothingSet", nullptr, nullptr, nullptr, nullptr, {"en"}},
        LanguageCase{"LangOnly", nullptr, nullptr, nullptr, "fr_FR.UTF-8", {"fr", "en"}},
        LanguageCase{"PosixLocalesMeanNothing", "C", "C.UTF-8", nullptr, "POSIX", {"en"}},
        LanguageCase{"AllOverridesTheOthers", nullptr, "de_DE.UTF-8", "it_IT", "fr_FR", {"de", "en"}},
        LanguageCase{"MessagesBeforeLang", nullptr, "", "it_IT@euro", "fr_FR", {"it", "en"}},
        LanguageCase{"LanguageListFirst", "pt_BR:en:fr", nullptr, nullptr, "de_DE.UTF-8",
                     {"pt_BR", "pt", "en", "fr", "de"}},
        LanguageCase{"NoPathsFromTheEnvironment", "../etc:a/b::es", nullptr, nullptr, nullptr,
                     {"es", "en"}}),
    [](const auto& info) { return std::string(info.param.name); });

TEST(LoadStringTable, FirstLanguageWithATableWins) {
  TempFolder system, local;
  system.WriteFile("en.lproj/Localizable.strings", "\"Yes\" = \"Yes\";");
  system.WriteFile("de.lproj/Localizable.strings", "\"Yes\" = \"Ja\";");
  local.WriteFile("fr.lproj/Localizable.strings", "\"Yes\" = \"Oui\";");
  ::mkdir(local.Join("it.lproj").c_str(), 0755);
  ::mkdir(local.Join("it.lproj/Localizable.strings").c_str(), 0755);  // a folder is no table
  std::string found;
  const std::vector<std::string> folders{system.Path(), local.Path()};
  EXPECT_EQ(LoadStringTable(folders, {"it", "fr", "de", "en"}, &found), (StringTable{{"Yes", "Oui"}}));
  EXPECT_EQ(found, local.Join("fr.lproj/Localizable.strings"));
  EXPECT_EQ(LoadStringTable(folders, {"es", "en"}), (StringTable{{"Yes", "Yes"}}));
  EXPECT_EQ(LoadStringTable(folders, {"es"}), std::nullopt);
  EXPECT_EQ(LoadStringTable({}, {"en"}), std::nullopt);
  // A damaged first table is an error, not a reason to fall back to the next language.
  system.WriteFile("es.lproj/Localizable.strings", "\"Yes\" = ");
  EXPECT_EQ(LoadStringTable(folders, {"es", "en"}, &found), std::nullopt);
  EXPECT_EQ(found, system.Join("es.lproj/Localizable.strings"));
}

TEST(LoadStringTable, ShippedEnglishTableIsValid) {
  std::optional<StringTable> table = LoadStringTable({MARIGOLD_SOURCE_RESOURCES}, {"en"});
  ASSERT_TRUE(table);
  for (const char* name : {"Log Files", "Untitled", "Default Sync Session", "Default Backup Session"})
    EXPECT_EQ(table->at(name), name);
  EXPECT_EQ(table->at("OS X requirements:"), "System requirements:");
  for (const auto& [key, value] : *table) EXPECT_FALSE(value.empty()) << key;
}

TEST(GLS, KeyIsTheFallback) {
  SetStringTable({{"Warning:", "Attention :"}, {"Blank", ""}});
  EXPECT_EQ(GLS("Warning:"), "Attention :");
  EXPECT_EQ(GLS("Not translated"), "Not translated");
  EXPECT_EQ(GLS("Blank"), "Blank");
  EXPECT_EQ(GLS(""), "");
  std::vector<std::thread> readers;
  for (int i = 0; i < 4; ++i)
    readers.emplace_back([] {
      for (int n = 0; n < 1000; ++n) ASSERT_EQ(GLS("Warning:"), "Attention :");
    });
  for (std::thread& reader : readers) reader.join();
  SetStringTable({});
  EXPECT_EQ(GLS("Warning:"), "Warning:");
}

}  // namespace
}  // namespace marigold
