// What the writer records and dates: items the task asked to add though they are gone from their
// side, the dates it must leave alone, and the mode that never overwrites.
#include <gtest/gtest.h>
#include <unistd.h>

#include "index_test_support.h"
#include "util/plist_io.h"

namespace marigold::index_test {
namespace {

PlistArray Paths(std::initializer_list<std::string> paths) {
  PlistArray array;
  for (const std::string& path : paths) array.emplace_back(path);
  return array;
}

TEST(ExactIndexWriter, AddedItemsAreRecordedAndKeepTheirDates) {
  TempFolder temp;
  const std::string a = temp.Join("A"), b = temp.Join("B");
  trees::Build(a, {{"here.txt", "h"}, {"kept.txt", "k"}, {"dir/", ""}});
  trees::Build(b, {{"here.txt", "h"}, {"kept.txt", "k"}, {"gone.txt", "g"}, {"dir/", ""}, {"dir/sub/", ""}});
  trees::Build(temp.Join("support"), {});
  for (const char* path : {"A/here.txt", "A/kept.txt", "B/gone.txt", "B/kept.txt"}) {
    ASSERT_TRUE(LinuxFileSystem().SetBackupDate(temp.Join(path), 1000));
  }

  IndexContext c(temp.Join("support/idx"), a, b);
  c.state.gStartSyncDateTimeUTC = 2000;
  // gone.txt and dir/sub exist on B only: recorded on A's side too, from their counterparts.
  const PlistDict record{{"addToExactIndexArray", Paths({a + "/gone.txt", a + "/dir/sub", a + "/nowhere.txt"})},
                         {"restoreBackupDateArray", Paths({a + "/kept.txt", b + "/kept.txt"})}};
  ASSERT_TRUE(c.index.WriteExactSyncIndex(2, record));

  std::optional<PlistDict> pair = ReadPlistDictFile(temp.Join("support/idx/MG3ExactSyncIndex.plist"));
  ASSERT_TRUE(pair);
  const PlistDict& sideA = *pair->GetDict("treeSource")->GetDict("A");
  EXPECT_EQ(sideA.GetString("gone.txt", "?"), "");
  ASSERT_NE(sideA.GetDict("dir"), nullptr);
  EXPECT_NE(sideA.GetDict("dir")->GetDict("sub"), nullptr) << "a counterpart folder is recorded as a folder";
  EXPECT_FALSE(sideA.Contains("nowhere.txt")) << "an item on neither side is left out";

  EXPECT_EQ(trees::BackupDate(temp.Join("A/here.txt")), 2000);
  EXPECT_EQ(trees::BackupDate(temp.Join("A/kept.txt")), 1000) << "listed to keep its date";
  EXPECT_EQ(trees::BackupDate(temp.Join("B/kept.txt")), 1000);
  EXPECT_EQ(trees::BackupDate(temp.Join("B/gone.txt")), 1000) << "the counterpart of an added item keeps its date";
}

TEST(ExactIndexWriter, ModeOneLeavesAnExistingIndexAlone) {
  IndexHarness h;
  trees::Build(h.A(), {{"x.txt", "x"}});
  h.Run();
  const std::string before = h.temp.ReadFile(h.PairIndex());
  trees::Build(h.A(), {{"y.txt", "y"}});

  IndexContext c(h.IndexFolder(), h.A(), h.B());
  EXPECT_FALSE(c.index.WriteExactSyncIndex(1, PlistDict()));
  EXPECT_EQ(h.temp.ReadFile(h.PairIndex()), before);
  EXPECT_TRUE(c.index.WriteExactSyncIndex(2, PlistDict()));
  EXPECT_NE(h.temp.ReadFile(h.PairIndex()), before);
  EXPECT_EQ(c.state.gTotError, 0);
}

}  // namespace
}  // namespace marigold::index_test
