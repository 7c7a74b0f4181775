#include "app/system_version.h"

#include <gtest/gtest.h>

namespace marigold {
namespace {

TEST(IsVersionAtLeast, OrdersKernelVersionsProperly) {
  struct Case { const char* release; bool passes; };
  for (const Case& c : {Case{"4.11.0", true}, Case{"4.10.17", false}, Case{"5.0", true},
                        Case{"6.1.0-18-amd64", true}, Case{"3.99", false}}) {
    auto version = ParseReleaseVersion(c.release);
    ASSERT_TRUE(version) << c.release;
    EXPECT_EQ(IsVersionAtLeast(*version, kMinimumKernel), c.passes) << c.release;
  }
  EXPECT_FALSE(ParseReleaseVersion("abc"));
}

TEST(ParseOsRelease, TakesPrettyNameAndVersionIdQuotedOrNot) {
  OsRelease release = ParseOsRelease(
      "# comment\nNAME=\"Debian GNU/Linux\"\nPRETTY_NAME=\"Debian GNU/Linux 12 (bookworm)\"\nVERSION_ID='12'\n");
  EXPECT_EQ(release.prettyName, "Debian GNU/Linux 12 (bookworm)");
  EXPECT_EQ(release.versionId, "12");
  EXPECT_EQ(ParseOsRelease("PRETTY_NAME=Arch\nVERSION_ID=\"a\\\"b\"").versionId, "a\"b");
  EXPECT_EQ(ReadOsRelease("/nonexistent/os-release").prettyName, "");
}

}  // namespace
}  // namespace marigold
