// Runs of a session whose multiple list is on: which rows become tasks, their indexes, rows
// that are skipped, a row whose two folders are one, and the dated sub-folder of each row.
#include <gtest/gtest.h>

#include "model/document_model.h"
#include "support/run_harness.h"
#include "options/multi_list.h"

namespace marigold::run_test {
namespace {

void SetRows(PlistDict& document, const std::vector<PlistDict>& rows) {
  PlistArray& array = *GetSessionDict(document, 0)->GetDict("multiDict")->GetArray("multiArray");
  for (std::size_t i = 0; i < rows.size(); ++i) array[i] = rows[i];
}

PlistDict MultiRow(int onOff, const std::string& source, const std::string& destination) {
  return PlistDict{{"onOff", onOff}, {"source", source}, {"destination", destination}};
}

TEST(MultiRuns, UsableRowsAreTheTasksInTheirOrder) {
  RunHarness h;
  trees::Build(h.Path("A1"), {{"one.txt", "1"}});
  trees::Build(h.Path("A2"), {{"two.txt", "2"}});
  trees::Build(h.Path("A4"), {{"four.txt", "4"}});
  trees::Build(h.Path("Same"), {{"same.txt", "s"}});
  for (const char* dest : {"B1", "B2", "B4"}) trees::Build(h.Path(dest), {});
  // The main pair is not a task while the list is on.
  trees::Build(h.A(), {{"main.txt", "m"}});
  h.document = MakeDocument({{h.A(), h.B(), 2, false, /*multi=*/true}});
  SetRows(h.document, {MultiRow(1, h.Path("A1"), h.Path("B1")), MultiRow(0, h.Path("A2"), h.Path("B2")),
                       MultiRow(1, h.Path("A3"), ""), MultiRow(1, h.Path("Same"), h.Path("Same")),
                       MultiRow(1, h.Path("A4"), h.Path("B4"))});
  h.services.multiFromSession = true;
  RunDriver& run = h.Run();

  EXPECT_EQ(trees::Read(h.Path("B1")), (trees::Tree{{"one.txt", "1"}}));
  EXPECT_EQ(trees::Read(h.Path("B2")), trees::Tree{});
  EXPECT_EQ(trees::Read(h.Path("B4")), (trees::Tree{{"four.txt", "4"}}));
  EXPECT_EQ(trees::Read(h.Path("Same")), (trees::Tree{{"same.txt", "s"}}));
  EXPECT_EQ(trees::Read(h.B()), trees::Tree{});
  EXPECT_EQ(run.state().gTotMulti, 3);
  EXPECT_EQ(run.copyTotals().FilesCopied, 2);

  // Task indexes count the usable rows: the folder pair of row 5 is task 2.
  const PlistArray& tasks = *h.driver().state().logSessionArray.at(0).AsDict()->GetArray("logTaskArray");
  ASSERT_EQ(tasks.size(), 3u);
  for (std::size_t i = 0; i < tasks.size(); ++i) EXPECT_EQ(tasks[i].AsDict()->GetInt("taskIndex"), std::int64_t(i));
  EXPECT_EQ(tasks[1].AsDict()->GetString("gSourceFolder"), h.Path("Same"));
  EXPECT_EQ(tasks[2].AsDict()->GetString("gDestFolder"), h.Path("B4"));
  EXPECT_EQ(*h.driver().state().logSessionArray.at(0).AsDict()->GetArray("executiveMultiArray"),
            ExecutiveMultiArray(*GetSessionDict(h.document, 0)));
}

TEST(MultiRuns, EachRowGetsItsOwnDatedSubFolder) {
  RunHarness h;
  trees::Build(h.Path("A1"), {{"one.txt", "1"}});
  trees::Build(h.Path("A2"), {{"two.txt", "2"}});
  for (const char* dest : {"B1", "B2"}) trees::Build(h.Path(dest), {});
  h.document = MakeDocument({{"", "", 2, false, /*multi=*/true, /*createDestFolder=*/true}});
  SetRows(h.document, {MultiRow(1, h.Path("A1"), h.Path("B1")), MultiRow(1, h.Path("A2"), h.Path("B2"))});
  h.services.multiFromSession = true;
  h.services.subFolderName = "2024/03/05";
  h.Run();

  EXPECT_EQ(trees::Read(h.Path("B1")), (trees::Tree{{"2024:03:05/", ""}, {"2024:03:05/one.txt", "1"}}));
  EXPECT_EQ(trees::Read(h.Path("B2")), (trees::Tree{{"2024:03:05/", ""}, {"2024:03:05/two.txt", "2"}}));
}

TEST(MultiRuns, AListWithoutUsableRowsDoesNothing) {
  RunHarness h;
  trees::Build(h.A(), {{"main.txt", "m"}});
  h.document = MakeDocument({{h.A(), h.B(), 2, false, /*multi=*/true}});
  h.services.multiFromSession = true;
  RunDriver& run = h.Run();
  EXPECT_EQ(run.state().gTotMulti, 0);
  EXPECT_EQ(trees::Read(h.B()), trees::Tree{});
  EXPECT_TRUE(h.driver().state().logSessionArray.at(0).AsDict()->GetArray("logTaskArray")->empty());
}

}  // namespace
}  // namespace marigold::run_test
