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

}  // namespace
}  // namespace marigold
