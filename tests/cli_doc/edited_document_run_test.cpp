// A document edited with `doc set` runs with the options it was given: filters, exclusions,
// settings and the multiple list all take effect in a real run of the program.
#include <gtest/gtest.h>

#include "support/cli_runner.h"
#include "support/tree_values.h"

namespace marigold {
namespace {

using cli_testing::CliHome;
using cli_testing::CliResult;
using cli_testing::ReadFileText;
using Tree = trees::Tree;

class EditedDocument : public ::testing::Test {
 protected:
  void SetUp() override { ASSERT_EQ(h.Run({"doc", "new", file}).status, 0); }
  CliResult Set(std::vector<std::string> assignments) const {
    assignments.insert(assignments.begin(), {"doc", "set", file});
    return h.Run(assignments);
  }

  CliHome h;
  std::string file = h.Path("work.mgy");
};

TEST_F(EditedDocument, RunsWithItsFiltersExclusionsAndSettings) {
  trees::Build(h.Path("A"), {{"keep.txt", "k"},
                             {"draft.TMP", "filtered by name"},
                             {"cache/", ""},
                             {"cache/big.bin", "excluded with its folder"},
                             {".hidden", "invisible"}});
  trees::Build(h.Path("B"), {{"old.txt", "gone after an exact backup"}});
  const CliResult set = Set({"consoleDict.topFolder=" + h.Path("A"), "consoleDict.bottomFolder=" + h.Path("B"),
                             "settingsDict.settTask=2", "settingsDict.settExact=1",
                             "settingsDict.settInvisibleItems=0", "filterDict.filterOn=1",
                             "filterDict.filterArray.0.filterFileNameOn=1",
                             "filterDict.filterArray.0.filterFileNamePop=2",
                             "filterDict.filterArray.0.filterFileNameField=.tmp", "excludeDict.excludeOn=1",
                             "excludeDict.excludeArray.0.itemToExclude=" + h.Path("a/CACHE")});
  ASSERT_EQ(set.status, 0) << set.err;

  const CliResult run = h.Run({"run", file});
  ASSERT_EQ(run.status, 0) << run.out << run.err;
  EXPECT_EQ(trees::Read(h.Path("B")), (Tree{{"keep.txt", "k"}}));
}

TEST_F(EditedDocument, RunsEachUsableRowOfItsMultipleList) {
  trees::Build(h.Path("S1"), {{"one.txt", "1"}});
  trees::Build(h.Path("S3"), {{"three.txt", "3"}});
  const CliResult set = Set({"settingsDict.settTask=2", "multiDict.multiOn=1",
                             "multiDict.multiArray.0.source=" + h.Path("S1"),
                             "multiDict.multiArray.0.destination=" + h.Path("D1"),
                             "multiDict.multiArray.4.source=" + h.Path("S3"),
                             "multiDict.multiArray.4.destination=" + h.Path("D3")});
  ASSERT_EQ(set.status, 0) << set.err;
  for (const char* dest : {"D1", "D3"}) trees::Build(h.Path(dest), {});

  const CliResult run = h.Run({"run", file});
  ASSERT_EQ(run.status, 0) << run.out << run.err;
  EXPECT_EQ(trees::Read(h.Path("D1")), (Tree{{"one.txt", "1"}}));
  EXPECT_EQ(trees::Read(h.Path("D3")), (Tree{{"three.txt", "3"}}));
}

TEST_F(EditedDocument, RowsTheirPanelsWouldRefuseAreNotWritten) {
  const std::string before = ReadFileText(file);
  const CliResult emptyName = Set({"filterDict.filterArray.3.filterFileNameOn=1"});
  EXPECT_EQ(emptyName.status, 2);
  EXPECT_NE(emptyName.err.find("Please insert a valid file name."), std::string::npos) << emptyName.err;

  const CliResult samePaths = Set({"multiDict.multiOn=1", "multiDict.multiArray.0.source=/data/x",
                                   "multiDict.multiArray.0.destination=/data/y",
                                   "multiDict.multiArray.2.source=/data/z",
                                   "multiDict.multiArray.2.destination=/data/z"});
  EXPECT_EQ(samePaths.status, 2);
  EXPECT_NE(samePaths.err.find("as source and destination at the row 3."), std::string::npos) << samePaths.err;
  EXPECT_EQ(ReadFileText(file), before);
}

}  // namespace
}  // namespace marigold
