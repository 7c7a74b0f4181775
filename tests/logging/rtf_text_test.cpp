#include <gtest/gtest.h>
#include <unicode/unistr.h>

#include <cstdlib>
#include <fstream>
#include <sstream>

#include "logging/rtf_text.h"
#include "support/temp_folder.h"

namespace marigold {
namespace {

const char* const kTexts[] = {
    "plain\r",
    "\u2022 Task: x\r\t\u221A can't copy \"a{b}\\c\"\r\r",
    "caf\u00e9 \u65e5\u672c \U0001F600 \u00a0end",
    "tabs\tin\tthe\tmiddle\r\r\r",
};

TEST(RtfText, OwnReaderGivesBackEveryText) {
  for (const char* text : kTexts) EXPECT_EQ(ReadRtfText(MakeRtfDocument(text)), std::string(text)) << text;
  // A file name that is not UTF-8 keeps its bytes.
  const std::string latin1 = "caf\xe9.txt\r";
  EXPECT_EQ(ReadRtfText(MakeRtfDocument(latin1)), latin1);
}

TEST(RtfText, LinkReplacesTheFirstAddressOnly) {
  const std::string rtf = MakeRtfDocument("v. 4 - http://x.example/\rsee http://x.example/\r", "http://x.example/", "x.example");
  EXPECT_NE(rtf.find("HYPERLINK \"http://x.example/\""), std::string::npos);
  EXPECT_EQ(ReadRtfText(rtf), "v. 4 - by x.example\rsee http://x.example/\r");
}

TEST(RtfText, RefusesWhatIsNotRtf) {
  EXPECT_EQ(ReadRtfText("hello"), std::nullopt);
  EXPECT_EQ(ReadRtfText("{\\rtf1 open"), std::nullopt);
}

// unrtf's text output with Unicode shown as "&#N;" (its own tables turn most characters into
// "?"); the result is decoded back to UTF-8 here.
std::string UnrtfText(const TempFolder& folder, const std::string& rtf) {
  const std::string conf = folder.Join("conf");
  std::string setup = "mkdir -p '" + conf + "' && cp /usr/share/unrtf/* '" + conf + "' && printf 'unisymbol_print\\n\\t&#%%;\\n' >> '" +
                      conf + "/text.conf'";
  if (std::system(setup.c_str()) != 0) return "<no unrtf>";
  folder.WriteFile("log.rtf", rtf);
  const std::string command = "unrtf -P '" + conf + "' --text '" + folder.Join("log.rtf") + "' > '" + folder.Join("out") + "'";
  if (std::system(command.c_str()) != 0) return "<unrtf failed>";
  std::string out = folder.ReadFile("out");
  const std::string rule = "-----------------\n";
  out = out.substr(out.find(rule) + rule.size());
  std::u16string units;
  std::string text;
  auto flush = [&] {  // UTF-16 units, surrogate pairs included, to UTF-8
    icu::UnicodeString(units.data(), static_cast<int32_t>(units.size())).toUTF8String(text);
    units.clear();
  };
  for (std::size_t i = 0; i < out.size();) {
    if (out.compare(i, 2, "&#") == 0) {
      const std::size_t end = out.find(';', i);
      const long value = std::strtol(out.substr(i + 2, end - i - 2).c_str(), nullptr, 10);
      units += static_cast<char16_t>(value < 0 ? value + 65536 : value);
      i = end + 1;
      continue;
    }
    flush();
    text += out[i] == '\n' ? '\r' : out[i];
    ++i;
  }
  flush();
  return text;
}

TEST(RtfText, AnIndependentReaderGivesBackTheText) {
  TempFolder folder;
  for (const char* text : kTexts) EXPECT_EQ(UnrtfText(folder, MakeRtfDocument(text)), std::string(text)) << text;
}

}  // namespace
}  // namespace marigold
