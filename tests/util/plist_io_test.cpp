#include "util/plist_io.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <limits>

#include "support/temp_folder.h"

namespace marigold {
namespace {

// One value of every kind, with the awkward cases of each. Dates are whole seconds here because
// XML property lists keep no fractions; the same value is spelled in Python below.
PlistDict Sample() {
  return PlistDict{
      {"text", "Gr\xC3\xBC\xC3\x9F" "e \xF0\x9F\x8C\xBC <&> \"quoted\" 'single'"},
      {"empty", ""},
      {"zero", 0},
      {"negative", -42},
      {"min", std::numeric_limits<std::int64_t>::min()},
      {"max", std::numeric_limits<std::int64_t>::max()},
      {"real", 0.1},
      {"hugeReal", -1.5e300},
      {"yes", true},
      {"no", false},
      {"reference", PlistDate{0}},
      {"newYear2025", PlistDate{757382400}},
      {"dayBefore", PlistDate{-86400}},
      {"data", PlistData{0, 1, 2, 0xFF, 0}},
      {"noData", PlistData{}},
      {"list", PlistArray{1, "two", PlistArray{}, PlistDict{}}},
      {"nested", PlistDict{{"inner", PlistDict{{"deep", PlistArray{PlistArray{true}}}}}}},
      {"\xD0\xBA\xD0\xBB\xD1\x8E\xD1\x87", "key in Cyrillic"},
  };
}

constexpr const char* kPythonScript = R"PY(
import datetime, plistlib, sys

def sample():
    return {
        "text": "Grüße \U0001F33C <&> \"quoted\" 'single'",
        "empty": "",
        "zero": 0,
        "negative": -42,
        "min": -2**63,
        "max": 2**63 - 1,
        "real": 0.1,
        "hugeReal": -1.5e300,
        "yes": True,
        "no": False,
        "reference": datetime.datetime(2001, 1, 1),
        "newYear2025": datetime.datetime(2025, 1, 1),
        "dayBefore": datetime.datetime(2000, 12, 31),
        "data": b"\x00\x01\x02\xff\x00",
        "noData": b"",
        "list": [1, "two", [], {}],
        "nested": {"inner": {"deep": [[True]]}},
        "ключ": "key in Cyrillic",
    }

mode = sys.argv[1]
if mode == "reencode":
    with open(sys.argv[2], "rb") as f:
        value = plistlib.load(f, fmt=plistlib.FMT_XML)
    with open(sys.argv[3], "wb") as f:
        plistlib.dump(value, f, fmt=plistlib.FMT_BINARY, sort_keys=False)
elif mode == "sample":
    fmt = plistlib.FMT_BINARY if sys.argv[2] == "binary" else plistlib.FMT_XML
    with open(sys.argv[3], "wb") as f:
        plistlib.dump(sample(), f, fmt=fmt, sort_keys=False)
elif mode == "fractions":
    base = datetime.datetime(2001, 1, 1)
    value = [base + datetime.timedelta(seconds=123.25), base - datetime.timedelta(seconds=100000.75)]
    with open(sys.argv[2], "wb") as f:
        plistlib.dump(value, f, fmt=plistlib.FMT_BINARY)
)PY";

// Python's plistlib is a reader and writer written apart from ours; these tests use it to check
// that our files are what other programs expect, and that we read what they write.
class PythonPlists : public ::testing::Test {
 protected:
  void SetUp() override {
    if (std::system("python3 -c 'import plistlib' >/dev/null 2>&1") != 0)
      GTEST_SKIP() << "python3 with plistlib is not available";
    mScript = mFolder.WriteFile("plists.py", kPythonScript);
  }

  bool Run(const std::string& arguments) {
    const std::string command = "python3 '" + mScript + "' " + arguments + " 2>'" +
                                mFolder.Join("python.err") + "'";
    const bool ok = std::system(command.c_str()) == 0;
    if (!ok) ADD_FAILURE() << mFolder.ReadFile("python.err");
    return ok;
  }

  std::optional<PlistValue> Read(const std::string& relative) {
    std::string error;
    std::optional<PlistValue> value = ParsePlist(mFolder.ReadFile(relative), &error);
    EXPECT_TRUE(value) << relative << ": " << error;
    return value;
  }

  TempFolder mFolder;
  std::string mScript;
};

TEST_F(PythonPlists, OurXmlReadsTheSameElsewhere) {
  mFolder.WriteFile("ours.plist", ToXmlPlist(PlistValue(Sample())));
  ASSERT_TRUE(Run("reencode '" + mFolder.Join("ours.plist") + "' '" + mFolder.Join("back.bplist") + "'"));
  EXPECT_EQ(Read("back.bplist"), PlistValue(Sample()));
}

TEST_F(PythonPlists, WeReadTheirBinaryAndXml) {
  ASSERT_TRUE(Run("sample binary '" + mFolder.Join("theirs.bplist") + "'"));
  ASSERT_TRUE(Run("sample xml '" + mFolder.Join("theirs.plist") + "'"));
  EXPECT_EQ(Read("theirs.bplist"), PlistValue(Sample()));
  EXPECT_EQ(Read("theirs.plist"), PlistValue(Sample()));
}

TEST_F(PythonPlists, BinaryDatesKeepFractions) {
  ASSERT_TRUE(Run("fractions '" + mFolder.Join("dates.bplist") + "'"));
  std::optional<PlistValue> dates = Read("dates.bplist");
  ASSERT_TRUE(dates && dates->IsArray());
  EXPECT_EQ(*dates, PlistValue(PlistArray{PlistDate{123.25}, PlistDate{-100000.75}}));
}

TEST(PlistXml, DatesAndNegativeNumbersAsText) {
  const std::string xml = ToXmlPlist(PlistValue(PlistArray{PlistDate{0}, PlistDate{123.25}, -7}));
  EXPECT_NE(xml.find("<date>2001-01-01T00:00:00Z</date>"), std::string::npos) << xml;
  // XML keeps whole seconds only.
  EXPECT_NE(xml.find("<date>2001-01-01T00:02:03Z</date>"), std::string::npos) << xml;
  EXPECT_NE(xml.find("<integer>-7</integer>"), std::string::npos) << xml;
  EXPECT_EQ(ParsePlist(xml), PlistValue(PlistArray{PlistDate{0}, PlistDate{123}, -7}));
}

TEST(PlistXml, CarriageReturnsSurviveOurOwnRoundTrip) {
  const PlistValue log(PlistDict{{"text", "line one\rline two\r"}});
  EXPECT_EQ(ParsePlist(ToXmlPlist(log)), log);
}

TEST(PlistRead, DictionaryFilesOnly) {
  TempFolder folder;
  folder.WriteFile("list.plist", ToXmlPlist(PlistValue(PlistArray{1})));
  folder.WriteFile("dict.plist", ToXmlPlist(PlistValue(Sample())));
  std::string error;
  EXPECT_EQ(ReadPlistDictFile(folder.Join("list.plist"), &error), std::nullopt);
  EXPECT_NE(error.find("dictionary"), std::string::npos) << error;
  EXPECT_EQ(ReadPlistDictFile(folder.Join("missing.plist"), &error), std::nullopt);
  EXPECT_EQ(ReadPlistDictFile(folder.Path(), &error), std::nullopt);
  EXPECT_EQ(ReadPlistDictFile(folder.Join("dict.plist")), Sample());
}

}  // namespace
}  // namespace marigold
