#include "util/plist_value.h"

#include <gtest/gtest.h>

namespace marigold {
namespace {

TEST(PlistDict, SetKeepsPositionAndCopiesDeeply) {
  PlistDict inner{{"n", 1}};
  PlistDict outer{{"a", inner}, {"b", "text"}};
  PlistDict copy = outer;
  copy.GetDict("a")->Set("n", 2);
  EXPECT_EQ(outer.GetDict("a")->GetInt("n"), 1);
  EXPECT_NE(copy, outer);
  outer.Set("a", 5);
  EXPECT_EQ(outer.Keys(), (std::vector<std::string>{"a", "b"}));
}

TEST(PlistDict, EqualityIsByKeysAndValuesNotOrder) {
  const PlistDict inner{{"x", 1}, {"y", "t"}};
  const PlistDict base{{"a", 1}, {"b", inner}};
  struct Case { const char* name; PlistDict other; bool equal; };
  for (const Case& c : {Case{"SameOrder", {{"a", 1}, {"b", inner}}, true},
                        Case{"KeysSorted", {{"b", PlistDict{{"y", "t"}, {"x", 1}}}, {"a", 1}}, true},
                        Case{"OtherValue", {{"b", inner}, {"a", 2}}, false},
                        Case{"KeyMissing", {{"a", 1}}, false},
                        Case{"KeyAdded", {{"a", 1}, {"b", inner}, {"c", 0}}, false}}) {
    EXPECT_EQ(base == c.other, c.equal) << c.name;
    EXPECT_EQ(PlistValue(base) == PlistValue(c.other), c.equal) << c.name;
  }
}

}  // namespace
}  // namespace marigold
