#include "util/well_scramble.h"

#include <gtest/gtest.h>

#include "util/plist_io.h"

namespace marigold {
namespace {

// Expected bytes were worked out apart from this code (the pass phrase loop run by hand in a
// separate script), so they pin the stored format that older documents hold.
struct ScrambleCase {
  const char* name;
  std::string password;
  char digit;
  PlistData bytes;
};

class WellDataVectors : public ::testing::TestWithParam<ScrambleCase> {};

TEST_P(WellDataVectors, ScramblesAndReadsBack) {
  const ScrambleCase& c = GetParam();
  EXPECT_EQ(SetWellDataWithDigit(c.password, c.digit), c.bytes);
  EXPECT_EQ(GetWellData(c.bytes), c.password);
}

INSTANTIATE_TEST_SUITE_P(
    Stored, WellDataVectors,
    ::testing::Values(
        ScrambleCase{"Ascii", "secret", '7', {0x03, 0x0F, 0x0E, 0x06, 0x50, 0x18, 0x1B}},
        ScrambleCase{"MultiByte", "p\xC3\xA4ssw\xC3\xB6rd", '3',
                     {0xFF, 0x08, 0x69, 0xA5, 0x92, 0x27, 0x2C, 0x03, 0x28, 0x68, 0x13}},
        ScrambleCase{"ThreeCharacters", "abc", '5', {0x01, 0xFB, 0xF9, 0x03}},
        ScrambleCase{"LongerThanThePassPhrase", std::string(30, 'x'), '1',
                     {0xFD, 0x0E, 0x26, 0x2E, 0x6B, 0x31, 0x32, 0xB9, 0x9F, 0x30, 0x2D,
                      0x2B, 0x1D, 0xC0, 0xB0, 0xC2, 0xB2, 0x71, 0x40, 0x29, 0x69, 0x3E,
                      0x71, 0x6B, 0x3C, 0x44, 0x81, 0x47, 0x48, 0xCF, 0xB5}}),
    [](const auto& info) { return std::string(info.param.name); });

TEST(WellData, EmptyShortOrDamagedBytesReadAsNoPassword) {
  EXPECT_TRUE(SetWellData("").empty());
  EXPECT_EQ(GetWellData({}), "");
  // "4ab" scrambled: a stored two-character password.
  EXPECT_EQ(GetWellData({0x00, 0xFA, 0xF9}), "");
  EXPECT_EQ(GetWellData(SetWellData("a")), "");
  EXPECT_EQ(GetWellData(SetWellData("\xC3\xA9\xC3\xA9")), "");  // two characters, four bytes
  EXPECT_EQ(GetWellData(SetWellData("\xC3\xA9\xC3\xA9\xC3\xA9")), "\xC3\xA9\xC3\xA9\xC3\xA9");
  PlistData bytes = SetWellDataWithDigit("secret", '7');
  bytes[3] ^= 0x80;  // no longer valid UTF-8 once unscrambled
  EXPECT_EQ(GetWellData(bytes), "");
}

TEST(WellData, RandomDigitHidesEqualPasswords) {
  const std::string password = "correct horse \xF0\x9F\x90\xB4 battery";
  // Different digits must give different bytes, and the digit is random: among many scrambles
  // at least two differ, and every one reads back.
  EXPECT_NE(SetWellDataWithDigit(password, '1'), SetWellDataWithDigit(password, '2'));
  bool differed = false;
  const PlistData first = SetWellData(password);
  for (int i = 0; i < 64; ++i) {
    const PlistData again = SetWellData(password);
    differed = differed || again != first;
    EXPECT_EQ(GetWellData(again), password);
  }
  EXPECT_TRUE(differed);
}

TEST(WellDict, RoundTripWithoutLeadingDigit) {
  const PlistDict account{{"mSendEmailTo", "ana@example.org"},
                          {"mSendEmailPassword", "p\xC3\xA4ss"},
                          {"mSendEmailPort", 587}};
  const PlistData bytes = SetWellDict(account);
  // The scrambled XML begins with "<?xml " itself, not with a digit in front.
  const PlistData head{0x08, 0xE0, 0xED, 0x23, 0x54, 0xCD};
  ASSERT_GE(bytes.size(), head.size());
  EXPECT_EQ(PlistData(bytes.begin(), bytes.begin() + 6), head);
  EXPECT_EQ(bytes.size(), ToXmlPlist(PlistValue(account)).size());
  EXPECT_EQ(GetWellDict(bytes), account);
}

TEST(WellDict, RefusesWhatIsNotAScrambledDictionary) {
  EXPECT_EQ(GetWellDict({}), std::nullopt);
  EXPECT_EQ(GetWellDict(SetWellDataWithDigit("not a property list", '3')), std::nullopt);
  const std::string xml = ToXmlPlist(PlistValue(PlistArray{1, 2}));
  EXPECT_EQ(GetWellDict(SetWellDict(PlistDict{})), PlistDict{});
  EXPECT_EQ(GetWellDict(PlistData(xml.begin(), xml.end())), std::nullopt);  // plain, not scrambled
}

}  // namespace
}  // namespace marigold
