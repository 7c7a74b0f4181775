// Pure rules of the platform layer: the order of names, what a name says about an item, the
// re-check of remembered items, and reading the mount table.
#include <gtest/gtest.h>

#include "platform/item_attributes.h"
#include "platform/item_names.h"
#include "platform/mount_table.h"
#include "util/temporary_names.h"

namespace marigold {
namespace {

TEST(ItemNames, SortIgnoringCaseWithBytesBreakingTies) {
  std::vector<std::string> names = {"b", "B", "a.txt", "A.TXT", "Zeta", "alpha", "\xff" "raw",
                                    "\xc3\xa9t\xc3\xa9", "\xc3\x89T\xc3\x89", "eta", "_x", "10", "9"};
  SortItemNames(names);
  EXPECT_EQ(names, (std::vector<std::string>{"10", "9", "_x", "A.TXT", "a.txt", "alpha", "B", "b",
                                             "eta", "Zeta", "\xc3\x89T\xc3\x89", "\xc3\xa9t\xc3\xa9",
                                             "\xff" "raw"}));
}

TEST(ItemNames, MatchIgnoringCaseFoldsPerCodePointOnly) {
  EXPECT_TRUE(ItemNamesMatchIgnoringCase("Read Me.TXT", "read me.txt"));
  EXPECT_TRUE(ItemNamesMatchIgnoringCase("\xc3\x89t\xc3\xa9", "\xc3\xa9T\xc3\x89"));  // Été / éTÉ
  EXPECT_FALSE(ItemNamesMatchIgnoringCase("stra\xc3\x9f" "e", "STRASSE"));  // no full folding
  EXPECT_FALSE(ItemNamesMatchIgnoringCase("a\xff", "a\xfe"));               // raw bytes differ
  EXPECT_TRUE(ItemNamesMatchIgnoringCase("A\xff", "a\xff"));
  EXPECT_FALSE(ItemNamesMatchIgnoringCase("abc", "abcd"));
  EXPECT_EQ(CompareItemNames("same", "same"), 0);
}

TEST(ItemNames, WhatANameSays) {
  struct Case { const char* name; bool invisible, package, temporary; };
  for (const Case& c : {Case{".hidden", true, false, false}, Case{"Photo.App", false, true, false},
                        Case{"x.framework", false, true, false}, Case{".app", true, false, false},
                        Case{"notes.txt", false, false, false}, Case{"app", false, false, false},
                        Case{".MGTempFile-0123456789abcdef", true, false, true},
                        Case{".MGTempFile-1a2b", true, false, false},
                        Case{"notes-MGTempFile.txt", false, false, false},
                        Case{"doc Marigold_Temporary_Name", false, false, false},
                        Case{"Marigold_Temporary_Name-0123456789abcdef", false, false, true}}) {
    EXPECT_EQ(IsInvisibleName(c.name), c.invisible) << c.name;
    EXPECT_EQ(IsPackageName(c.name), c.package) << c.name;
    EXPECT_EQ(IsTemporaryName(c.name), c.temporary) << c.name;
  }
  EXPECT_TRUE(IsTemporaryName(MakeTemporaryName()));
  EXPECT_TRUE(IsTemporaryName(MakeTemporaryName(TemporaryKind::kRename)));
  EXPECT_EQ(LastPathComponent("/a/b/"), "b");
  EXPECT_EQ(LastPathComponent("/"), "/");
  EXPECT_EQ(LastPathComponent("plain"), "plain");
}

TEST(ItemSnapshot, MatchesOnlyWhatTheScanSaw) {
  ItemSnapshot file{true, ItemKind::kFile, 10, {100, 5}};
  ItemSnapshot folder{true, ItemKind::kFolder, 4096, {100, 0}};
  struct Case { const char* what; ItemSnapshot then, now; bool matches; };
  for (const Case& c : {
           Case{"unchanged", file, file, true},
           Case{"size", file, {true, ItemKind::kFile, 11, {100, 5}}, false},
           Case{"nanoseconds", file, {true, ItemKind::kFile, 10, {100, 6}}, false},
           Case{"kind", file, {true, ItemKind::kSymlink, 10, {100, 5}}, false},
           Case{"deleted", file, ItemSnapshot::Absent(), false},
           Case{"appeared", ItemSnapshot::Absent(), file, false},
           Case{"still absent", ItemSnapshot::Absent(), ItemSnapshot::Absent(), true},
           Case{"folder written into", folder, {true, ItemKind::kFolder, 8192, {200, 1}}, true},
       }) {
    EXPECT_EQ(c.then.Matches(c.now), c.matches) << c.what;
  }
}

TEST(MountTable, ParsesEscapesOptionalFieldsAndOvermounts) {
  const char* text =
      "27 1 254:0 / / rw,relatime - ext4 /dev/vda rw\n"
      "40 27 7:0 / /media/My\\040Stick rw,nosuid shared:5 master:1 - vfat /dev/loop0 rw\n"
      "41 27 0:50 / /mnt/net ro,relatime - fuse.sshfs host:/srv rw\n"
      "42 27 0:51 / /mnt/net rw - tmpfs tmpfs rw\n"
      "garbage line\n";
  auto mounts = ParseMountInfo(text);
  ASSERT_EQ(mounts.size(), 4u);
  EXPECT_EQ(mounts[1].mountPoint, "/media/My Stick");
  EXPECT_EQ(mounts[1].type, "vfat");
  EXPECT_TRUE(mounts[2].readOnly);
  EXPECT_FALSE(mounts[1].readOnly);

  EXPECT_EQ(FindMount(mounts, "/media/My Stick/docs/a")->type, "vfat");
  EXPECT_EQ(FindMount(mounts, "/media/My Stick")->type, "vfat");
  EXPECT_EQ(FindMount(mounts, "/media/My Sticker")->type, "ext4");  // whole components only
  EXPECT_EQ(FindMount(mounts, "/mnt/net/x")->type, "tmpfs");         // the later mount covers
  EXPECT_FALSE(FindMount(mounts, "relative").has_value());
}

}  // namespace
}  // namespace marigold
