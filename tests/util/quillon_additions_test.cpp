#include "util/quillon_additions.h"

#include <gtest/gtest.h>

namespace marigold {
namespace {

enum class Check { Prefix, Suffix, Contains, Equal };

struct TextCase {
  const char* name;
  Check check;
  std::string text, part;
  bool exact, ignoringCase;
};

class TextTests : public ::testing::TestWithParam<TextCase> {};

TEST_P(TextTests, ExactAndIgnoringCase) {
  const TextCase& c = GetParam();
  switch (c.check) {
    case Check::Prefix:
      EXPECT_EQ(HasPrefix(c.text, c.part), c.exact);
      EXPECT_EQ(HasPrefixIgnoringCase(c.text, c.part), c.ignoringCase);
      break;
    case Check::Suffix:
      EXPECT_EQ(HasSuffix(c.text, c.part), c.exact);
      EXPECT_EQ(HasSuffixIgnoringCase(c.text, c.part), c.ignoringCase);
      break;
    case Check::Contains:
      EXPECT_EQ(Contains(c.text, c.part), c.exact);
      EXPECT_EQ(ContainsIgnoringCase(c.text, c.part), c.ignoringCase);
      break;
    case Check::Equal:
      EXPECT_EQ(c.text == c.part, c.exact);
      EXPECT_EQ(EqualIgnoringCase(c.text, c.part), c.ignoringCase);
      EXPECT_EQ(EqualIgnoringCase(c.part, c.text), c.ignoringCase);
      break;
  }
}

INSTANTIATE_TEST_SUITE_P(
    Texts, TextTests,
    ::testing::Values(
        TextCase{"PrefixAscii", Check::Prefix, "Report.TXT", "report", false, true},
        TextCase{"PrefixLongerThanText", Check::Prefix, "ab", "abc", false, false},
        TextCase{"PrefixEmpty", Check::Prefix, "ab", "", true, true},
        TextCase{"PrefixAccented", Check::Prefix, "\xC3\x89T\xC3\x89.doc", "\xC3\xA9t\xC3\xA9", false, true},
        TextCase{"SuffixTmp", Check::Suffix, "draft.TMP", ".tmp", false, true},
        TextCase{"SuffixMultiByteOnly", Check::Suffix, "caf\xC3\xA9", "\xC3\x89", false, true},
        TextCase{"SuffixLongerThanText", Check::Suffix, "a", "\xC3\xA9""a", false, false},
        TextCase{"ContainsMiddle", Check::Contains, "My Backup Folder", "BACKUP", false, true},
        TextCase{"ContainsAbsent", Check::Contains, "My Backup Folder", "sync", false, false},
        TextCase{"ContainsEmptyInEmpty", Check::Contains, "", "", true, true},
        TextCase{"ContainsGreek", Check::Contains, "\xCE\xA3\xCE\x99\xCE\xA3", "\xCF\x83\xCE\xB9", false, true},
        TextCase{"EqualKelvinSign", Check::Equal, "\xE2\x84\xAA", "k", false, true},
        TextCase{"EqualFinalSigma", Check::Equal, "\xCF\x82", "\xCE\xA3", false, true},
        // Simple folding only: no file system takes "straße" for "STRASSE".
        TextCase{"SharpSIsNotDoubleS", Check::Equal, "stra\xC3\x9F""e", "STRASSE", false, false},
        // Composed and decomposed forms stay different: names are compared as stored.
        TextCase{"NfcIsNotNfd", Check::Equal, "\xC3\xA9", "e\xCC\x81", false, false},
        TextCase{"InvalidBytesAsThemselves", Check::Equal, "A\xFF", "a\xFF", false, true},
        TextCase{"InvalidByteIsNoCharacter", Check::Equal, "\xE9", "\xC3\xA9", false, false},
        TextCase{"InvalidByteNotLatin1", Check::Equal, "\xC9", "\xE9", false, false},
        TextCase{"TruncatedSequenceInside", Check::Contains, "x\xC3yz", "\xC3Y", false, true}),
    [](const auto& info) { return std::string(info.param.name); });

TEST(DictHelpers, SetObjectNotInListNeverOverwrites) {
  PlistDict dict{{"sessionName", "Mine"}};
  EXPECT_FALSE(setObjectNotInList(dict, "sessionName", "Default"));
  EXPECT_FALSE(setObjectNotInList(dict, "", 1));
  EXPECT_TRUE(setObjectNotInList(dict, "settTask", 2));
  EXPECT_EQ(dict, (PlistDict{{"sessionName", "Mine"}, {"settTask", 2}}));
}

TEST(DictHelpers, MoveObjectForKey) {
  PlistDict session{{"timerOn", 1}, {"sessionName", "S"}};
  PlistDict timer{{"timerOn", 0}, {"timerArray", PlistArray{}}};
  MoveObjectForKey(session, "timerOn", timer);
  MoveObjectForKey(session, "absent", timer);
  EXPECT_EQ(session, (PlistDict{{"sessionName", "S"}}));
  EXPECT_EQ(timer, (PlistDict{{"timerOn", 1}, {"timerArray", PlistArray{}}}));
}

}  // namespace
}  // namespace marigold
