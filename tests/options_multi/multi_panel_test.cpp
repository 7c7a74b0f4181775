#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "model/document_model.h"
#include "options/multi_list.h"
#include "support/temp_folder.h"

namespace marigold {
namespace {

// A multiDict of 32 default rows with `rows` filled in from the first: {onOff, source, destination}.
struct RowSpec {
  int onOff;
  std::string source, destination;
};
PlistDict MultiDict(int multiOn, const std::vector<std::pair<int, RowSpec>>& rows) {
  PlistArray array(32, PlistValue(DefaultMultiRow()));
  for (const auto& [index, wanted] : rows) {
    array[static_cast<std::size_t>(index)] =
        PlistDict{{"onOff", wanted.onOff}, {"source", wanted.source}, {"destination", wanted.destination}};
  }
  return PlistDict{{"multiOn", multiOn}, {"multiArray", std::move(array)}};
}

const PlistDict& RowOf(const PlistDict& multi, std::size_t i) { return *multi.GetArray("multiArray")->at(i).AsDict(); }

TEST(MultiPanel, UsableRowsAreOnAndFilledInOrder) {
  PlistDict document;
  AddSession(1, "s", document);
  *GetSessionDict(document, 0)->GetDict("multiDict") =
      MultiDict(1, {{0, {1, "/a", "/b"}}, {1, {0, "/c", "/d"}}, {2, {1, "/e", ""}}, {5, {2, "/f", "/g"}}});
  const PlistArray rows = ExecutiveMultiArray(*GetSessionDict(document, 0));
  ASSERT_EQ(rows.size(), 2u);
  EXPECT_EQ(rows[0].AsDict()->GetString("source"), "/a");
  EXPECT_EQ(rows[1].AsDict()->GetString("source"), "/f");
  EXPECT_EQ(CountMultiValid(document, 0), 2);
  EXPECT_EQ(CountMultiValid(document, 1), 0);
  EXPECT_EQ(CountMultiValid(document, -1), 0);
  GetSessionDict(document, 0)->GetDict("multiDict")->Set("multiArray", PlistArray{});
  EXPECT_EQ(CountMultiValid(document, 0), 0);
}

TEST(MultiPanel, LeavingChecksEqualFoldersAndUnticksAnEmptyList) {
  // Rows 1 and 3 filled, row 3 pointing at itself: the alert names row 3 and nothing changes.
  PlistDict same = MultiDict(1, {{0, {1, "/a", "/b"}}, {2, {1, "/x", "/x"}}});
  const PlistDict before = same;
  EXPECT_EQ(CheckMultiPanel(same), "Can't set the same folder:\r\"/x\"\ras source and destination at the row 3.");
  EXPECT_EQ(same, before);

  // An equal pair in a row that is off is not looked at.
  PlistDict offSame = MultiDict(1, {{0, {0, "/x", "/x"}}, {1, {1, "/a", "/b"}}});
  EXPECT_EQ(CheckMultiPanel(offSame), std::nullopt);
  EXPECT_EQ(offSame.GetInt("multiOn"), 1);

  // The only filled row is off: the box is unticked.
  PlistDict onlyOff = MultiDict(1, {{0, {0, "/a", "/b"}}});
  EXPECT_EQ(CheckMultiPanel(onlyOff), std::nullopt);
  EXPECT_EQ(onlyOff.GetInt("multiOn"), 0);

  // A clear box is stored as it is, equal folders and all.
  PlistDict clear = MultiDict(0, {{0, {1, "/x", "/x"}}});
  EXPECT_EQ(CheckMultiPanel(clear), std::nullopt);
  EXPECT_EQ(clear.GetInt("multiOn"), 0);
}

TEST(MultiPanel, ClicksToggleDeleteAndClear) {
  const std::string home = "/home/someone";
  PlistDict multi = MultiDict(1, {{0, {1, "/a", "/b"}}});
  EXPECT_EQ(EditMultiRow(multi, 0, 0, MultiModifier::kNone, home).action, MultiClick::Action::kToggled);
  EXPECT_EQ(RowOf(multi, 0).GetInt("onOff"), 0);
  EditMultiRow(multi, 0, 0, MultiModifier::kNone, home);
  EXPECT_EQ(RowOf(multi, 0).GetInt("onOff"), 1);

  // Deleting the fifth row of 32 leaves 31, the others in their order.
  multi.GetArray("multiArray")->at(5) = PlistDict{{"onOff", 1}, {"source", "/six"}, {"destination", "/y"}};
  EXPECT_EQ(EditMultiRow(multi, 4, 3, MultiModifier::kNone, home).action, MultiClick::Action::kDeleted);
  EXPECT_EQ(multi.GetArray("multiArray")->size(), 31u);
  EXPECT_EQ(RowOf(multi, 4).GetString("source"), "/six");

  // Outside the list or its columns nothing happens.
  EXPECT_EQ(EditMultiRow(multi, 31, 1, MultiModifier::kNone, home).action, MultiClick::Action::kNone);
  EXPECT_EQ(EditMultiRow(multi, 0, 4, MultiModifier::kNone, home).action, MultiClick::Action::kNone);
  EXPECT_EQ(multi.GetArray("multiArray")->size(), 31u);

  // Option-click clears a path and its display components; a row with both paths gone is on.
  RowSpec off{0, "/a", "/b"};
  multi = MultiDict(1, {{0, off}});
  multi.GetArray("multiArray")->at(0).AsDict()->Set("srcPathDisplayArray", PlistArray{"a"});
  EXPECT_EQ(EditMultiRow(multi, 0, 1, MultiModifier::kOption, home).action, MultiClick::Action::kCleared);
  EXPECT_EQ(RowOf(multi, 0), (PlistDict{{"onOff", 0}, {"source", ""}, {"destination", "/b"}}));
  EditMultiRow(multi, 0, 2, MultiModifier::kOption, home);
  EXPECT_EQ(RowOf(multi, 0), (PlistDict{{"onOff", 1}, {"source", ""}, {"destination", ""}}));

  const MultiClick reveal = EditMultiRow(multi = MultiDict(1, {{0, off}}), 0, 2, MultiModifier::kControl, home);
  EXPECT_EQ(reveal.action, MultiClick::Action::kRevealPath);
  EXPECT_EQ(reveal.path, "/b");
}

TEST(MultiPanel, ChoosingAndDroppingFolders) {
  TempFolder temp;
  std::vector<std::string> mounted;
  auto remember = [&](const std::string& path) { mounted.push_back(path); };

  // The chooser starts at the row's path when it exists, else at home.
  PlistDict multi = MultiDict(0, {{0, {1, temp.Path(), "/no/such/folder"}}});
  const MultiClick source = EditMultiRow(multi, 0, 1, MultiModifier::kNone, "/home/x");
  EXPECT_EQ(source.action, MultiClick::Action::kChoosePath);
  EXPECT_EQ(source.path, temp.Path());
  EXPECT_EQ(source.prompt, "Choose the source Folder");
  const MultiClick dest = EditMultiRow(multi, 0, 2, MultiModifier::kNone, "/home/x");
  EXPECT_EQ(dest.path, "/home/x");
  EXPECT_EQ(dest.prompt, "Choose the destination Folder");

  // A chosen folder ticks a clear box and goes to the auto-mount list.
  ChooseMultiPath(multi, 0, MultiColumn::kDestination, "/mnt/disk/backup", remember);
  EXPECT_EQ(RowOf(multi, 0).GetString("destination"), "/mnt/disk/backup");
  EXPECT_EQ(multi.GetInt("multiOn"), 1);
  EXPECT_EQ(mounted, (std::vector<std::string>{"/mnt/disk/backup"}));

  // Drops: refused on the on/off column and past the last row; taken on the destination cell.
  EXPECT_FALSE(DropOnMultiCell(multi, 1, 0, "/d", {}, remember));
  EXPECT_FALSE(DropOnMultiCell(multi, 32, 2, "/d", {}, remember));
  EXPECT_TRUE(DropOnMultiCell(multi, 1, 2, "/media/d", {"media", "d"}, remember));
  EXPECT_EQ(RowOf(multi, 1).GetString("destination"), "/media/d");
  EXPECT_EQ(*RowOf(multi, 1).GetArray("dstPathDisplayArray"), (PlistArray{"media", "d"}));
  EXPECT_EQ(mounted.back(), "/media/d");
  // Nothing is taken while the box is clear.
  multi.Set("multiOn", 0);
  EXPECT_FALSE(DropOnMultiCell(multi, 2, 1, "/e", {}, remember));
  EXPECT_EQ(RowOf(multi, 2).GetString("source"), "");
}

}  // namespace
}  // namespace marigold
