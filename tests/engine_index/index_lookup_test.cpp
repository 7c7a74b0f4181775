// The lookup and the membership walk on index files written by hand: which paths count as
// recorded, the names that are not UTF-8, the date, and the files that must read as absent.
#include <gtest/gtest.h>

#include <plist/plist.h>

#include <set>

#include "engine/exact_index_names.h"
#include "index_test_support.h"
#include "util/plist_io.h"
#include "util/quillon_additions.h"

namespace marigold::index_test {
namespace {

const std::string kSource = "/r/src";
const std::string kDest = "/r/dst";

// src: a.txt, dir/in.txt, Pkg.app (a package: a leaf), a name of invalid UTF-8, empty/.
// dst: only-dst.txt.
const std::string kTreeSource =
    "<dict><key>src</key><dict>"
    "<key>a.txt</key><string></string>"
    "<key>dir</key><dict><key>in.txt</key><string/></dict>"
    "<key>Pkg.app</key><string></string>"
    "<key>" + EscapeIndexName("caf\xE9") + "</key><string></string>"
    "<key>R&amp;D &lt;1&gt;</key><string></string>"
    "<key>empty</key><dict/>"
    "</dict></dict>";
const std::string kTreeDest = "<dict><key>dst</key><dict><key>only-dst.txt</key><string></string></dict></dict>";

class IndexLookup : public ::testing::Test {
 protected:
  void SetUp() override { WriteIndexFiles(folder.Path(), kSource, kDest, kTreeSource, kTreeDest); }
  TempFolder folder;
};

TEST_F(IndexLookup, MembershipFollowsTheRecordedTree) {
  IndexContext c(folder.Path(), kSource, kDest);
  ASSERT_TRUE(c.index.ExactSyncFileExists(true));
  ASSERT_TRUE(c.index.lastExactSyncDate());
  EXPECT_EQ(UnixSecondsFromDate(*c.index.lastExactSyncDate()), 1767323045.0);

  const std::vector<std::pair<std::string, bool>> source = {
      {"/r/src", true},                // the root itself
      {"/r", true},                    // above the root
      {"/r/src/a.txt", true},
      {"/r/src//dir/", true},          // split as the platform splits paths
      {"/r/src/dir/in.txt", true},
      {"/r/src/empty", true},
      {"/r/src/caf\xE9", true},        // stored escaped, asked as bytes
      {"/r/src/R&D <1>", true},
      {"/r/src/missing", false},
      {"/r/src/dir/missing", false},
      {"/r/src/a.txt/below", false},   // a leaf met before the end: the folder became a file
      {"/r/src/Pkg.app/Contents", false},
      {"/r/src/only-dst.txt", false},  // the other side's item
  };
  for (const auto& [path, expected] : source) EXPECT_EQ(c.index.ItWasExixting(path, 1), expected) << path;
  EXPECT_TRUE(c.index.ItWasExixting("/r/dst/only-dst.txt", 0));
  EXPECT_FALSE(c.index.ItWasExixting("/r/dst/a.txt", 0));
}

TEST_F(IndexLookup, ABinaryIndexReadsTheSame) {
  // Another writer's encoding of the same keys and types.
  std::optional<PlistDict> pair = ReadPlistDictFile(folder.Join("pair.plist"));
  ASSERT_TRUE(pair);
  plist_t node = nullptr;
  const std::string xml = ToXmlPlist(PlistValue(*pair));
  plist_from_memory(xml.data(), static_cast<std::uint32_t>(xml.size()), &node);
  ASSERT_NE(node, nullptr);
  char* bytes = nullptr;
  std::uint32_t length = 0;
  plist_to_bin(node, &bytes, &length);
  trees::Write(folder.Join("pair.plist"), std::string(bytes, length));
  plist_to_bin_free(bytes);
  plist_free(node);

  IndexContext c(folder.Path(), kSource, kDest);
  ASSERT_TRUE(c.index.ExactSyncFileExists(true));
  EXPECT_TRUE(c.index.ItWasExixting("/r/src/dir/in.txt", 1));
  EXPECT_TRUE(c.index.ItWasExixting("/r/src/caf\xE9", 1));
  EXPECT_FALSE(c.index.ItWasExixting("/r/src/a.txt/below", 1));
  EXPECT_TRUE(c.index.ItWasExixting("/r/dst/only-dst.txt", 0));
}

TEST_F(IndexLookup, APairFileOfAnotherPairIsSkipped) {
  // The main index says the file is this pair's, but the file itself names another pair.
  std::string text = ReadWholeFile(folder.Join("pair.plist")).value_or("");
  text.replace(text.find("/r/dst"), 6, "/r/xxx");
  trees::Write(folder.Join("pair.plist"), text);
  IndexContext c(folder.Path(), kSource, kDest);
  EXPECT_FALSE(c.index.ExactSyncFileExists(true));
  EXPECT_FALSE(c.index.lastExactSyncDate());
}

TEST(IndexNames, EscapesAreReversibleAndCannotBeRealNames) {
  const std::vector<std::string> names = {"plain", "100%", "caf\xE9", "caf\xC3\xA9", "tab\there", "\xFF\xFE", "%FF",
                                          "line\rbreak", "a%25"};
  std::set<std::string> stored;
  for (const std::string& name : names) {
    const std::string escaped = EscapeIndexName(name);
    EXPECT_TRUE(IsPlainIndexText(escaped)) << name;
    EXPECT_EQ(UnescapeIndexName(escaped), name);
    EXPECT_TRUE(stored.insert(escaped).second) << "two names share " << escaped;
    const std::string path = "/x/" + name;
    EXPECT_EQ(UnescapeIndexPath(EscapeIndexPath(path)), path);
    EXPECT_TRUE(IsPlainIndexText(EscapeIndexPath(path)));
  }
  EXPECT_EQ(EscapeIndexName("caf\xC3\xA9"), "caf\xC3\xA9") << "valid UTF-8 is stored as it is";
  EXPECT_EQ(UnescapeIndexPath(EscapeIndexPath("relative%2F")), "relative%2F");
}

}  // namespace
}  // namespace marigold::index_test
