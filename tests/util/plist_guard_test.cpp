#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

#include "util/plist_io.h"

namespace marigold {
namespace {

// Binary property lists built byte by byte, so that a test can state shapes no writer makes.
void PutBigEndian(std::string& out, std::uint64_t value, int width) {
  for (int shift = 8 * (width - 1); shift >= 0; shift -= 8) out.push_back(static_cast<char>(value >> shift));
}

std::string Container(std::uint8_t kind, const std::vector<std::uint64_t>& refs, std::size_t count) {
  std::string out;
  if (count < 15) {
    out.push_back(static_cast<char>(kind << 4 | count));
  } else {
    out.push_back(static_cast<char>(kind << 4 | 0x0F));
    out.push_back('\x12');  // a 4-byte integer follows with the count
    PutBigEndian(out, count, 4);
  }
  for (std::uint64_t ref : refs) PutBigEndian(out, ref, 4);
  return out;
}

std::string Array(const std::vector<std::uint64_t>& refs) { return Container(0xA, refs, refs.size()); }

std::string Dict(const std::vector<std::uint64_t>& keys, const std::vector<std::uint64_t>& values) {
  std::vector<std::uint64_t> refs = keys;
  refs.insert(refs.end(), values.begin(), values.end());
  return Container(0xD, refs, keys.size());
}

std::string Ascii(const std::string& text) { return static_cast<char>(0x50 | text.size()) + text; }

// "bplist00", the objects, a table of 4-byte offsets, and the trailer (4-byte references).
std::string BinaryPlist(const std::vector<std::string>& objects, std::uint64_t top = 0) {
  std::string out = "bplist00";
  std::vector<std::uint64_t> offsets;
  for (const std::string& object : objects) {
    offsets.push_back(out.size());
    out += object;
  }
  const std::uint64_t table = out.size();
  for (std::uint64_t offset : offsets) PutBigEndian(out, offset, 4);
  out.append(6, '\0');
  out.push_back('\x04');
  out.push_back('\x04');
  PutBigEndian(out, objects.size(), 8);
  PutBigEndian(out, top, 8);
  PutBigEndian(out, table, 8);
  return out;
}

// A chain of `depth` arrays, each holding `width` references to the next, ending in a string.
std::string SharedChain(int depth, int width) {
  std::vector<std::string> objects;
  for (int level = 0; level < depth; ++level)
    objects.push_back(Array(std::vector<std::uint64_t>(static_cast<std::size_t>(width), level + 1)));
  objects.push_back(Ascii("lol"));
  return BinaryPlist(objects);
}

TEST(PlistGuard, BuiltBinaryListsAreReadable) {
  // The builder makes real property lists: shared objects are expanded, dictionaries read.
  std::optional<PlistValue> shared = ParsePlist(SharedChain(2, 3));
  ASSERT_TRUE(shared);
  const PlistArray leaf{"lol", "lol", "lol"};
  EXPECT_EQ(*shared, PlistValue(PlistArray{leaf, leaf, leaf}));
  std::optional<PlistValue> dict = ParsePlist(BinaryPlist({Dict({1}, {2}), Ascii("k"), Ascii("v")}));
  EXPECT_EQ(dict, PlistValue(PlistDict{{"k", "v"}}));
  EXPECT_TRUE(ParsePlist(SharedChain(200, 1)));
}

struct HostileCase {
  const char* name;
  std::string (*bytes)();
  const char* why;  // part of the error message
};

class HostileInput : public ::testing::TestWithParam<HostileCase> {};

TEST_P(HostileInput, RefusedWithAReason) {
  const HostileCase& c = GetParam();
  std::string error;
  EXPECT_EQ(ParsePlist(c.bytes(), &error), std::nullopt);
  EXPECT_NE(error.find(c.why), std::string::npos) << error;
}

std::string DeepXml() {
  constexpr int kLevels = 100000;
  std::string xml = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\">";
  for (int i = 0; i < kLevels; ++i) xml += "<array>";
  for (int i = 0; i < kLevels; ++i) xml += "</array>";
  return xml + "</plist>";
}

std::string DeepBinary() { return SharedChain(100000, 1); }
std::string BillionLaughs() { return SharedChain(40, 10); }
std::string CycleOfTwo() { return BinaryPlist({Array({1}), Array({0})}); }
std::string SelfInDict() { return BinaryPlist({Dict({1}, {0}), Ascii("me")}); }
std::string ReferencePastTheEnd() { return BinaryPlist({Array({7})}); }
std::string TopPastTheEnd() { return BinaryPlist({Ascii("x")}, 3); }
std::string Truncated() { return SharedChain(3, 2).substr(0, 30); }
// The parser aborts the whole program on a key with a NUL inside, so such keys never reach it.
std::string KeyWithNul() { return BinaryPlist({Dict({1}, {2}), Ascii(std::string("k\0y", 3)), Ascii("v")}); }
std::string KeyThatIsNoString() { return BinaryPlist({Dict({1}, {1}), Array({})}); }
std::string HugeCount() {
  std::string lie = Container(0xA, {}, 0x7FFFFFFF);  // claims two billion elements, holds none
  return BinaryPlist({lie});
}

INSTANTIATE_TEST_SUITE_P(
    Plists, HostileInput,
    ::testing::Values(HostileCase{"XmlNestedTooDeep", DeepXml, "nested"},
                      HostileCase{"BinaryNestedTooDeep", DeepBinary, "nested"},
                      HostileCase{"BinaryBillionLaughs", BillionLaughs, "too many values"},
                      HostileCase{"BinaryCycle", CycleOfTwo, "refers to itself"},
                      HostileCase{"BinaryDictHoldsItself", SelfInDict, "refers to itself"},
                      HostileCase{"BinaryReferencePastTheEnd", ReferencePastTheEnd, "damaged"},
                      HostileCase{"BinaryTopPastTheEnd", TopPastTheEnd, "damaged"},
                      HostileCase{"BinaryTruncated", Truncated, "truncated"},
                      HostileCase{"BinaryCountBeyondTheFile", HugeCount, "damaged"},
                      HostileCase{"BinaryKeyWithNul", KeyWithNul, "damaged"},
                      HostileCase{"BinaryKeyThatIsNoString", KeyThatIsNoString, "damaged"}),
    [](const auto& info) { return std::string(info.param.name); });

TEST(PlistGuard, LimitsAreTheCallers) {
  PlistLimits tight;
  tight.maxDepth = 3;
  tight.maxNodes = 10;
  EXPECT_EQ(ParsePlist(SharedChain(3, 1), nullptr, tight), std::nullopt);
  EXPECT_TRUE(ParsePlist(SharedChain(2, 1), nullptr, tight));
  EXPECT_EQ(ParsePlist(SharedChain(2, 3), nullptr, tight), std::nullopt);  // 13 values
  // Markup inside comments and CDATA is not nesting.
  const std::string xml =
      "<plist><array><!-- <array><array><array> --><string><![CDATA[<array><array>]]></string>"
      "</array></plist>";
  EXPECT_TRUE(ParsePlist(xml, nullptr, tight));
}

}  // namespace
}  // namespace marigold
