// The preview's editing rules over small trees held in memory: what each click switches, which
// folders follow, the tallies after the clicks, and the task's exact-index additions.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "engine/copy_mode.h"
#include "engine/preview_editor.h"
#include "platform/linux_file_system.h"

namespace marigold {
namespace {

constexpr unsigned kOption = kPreviewKeyOption;
constexpr unsigned kControl = kPreviewKeyControl;
constexpr int kSideA = kPreviewColumnSideA;
constexpr int kSideB = kPreviewColumnSideB;

// One node: its path in the task ("d/" is a walked folder), mode, and ifSkipAddToExactIndex.
struct NodeSpec {
  std::string path;
  int mode;
  int skipKey = -1;
};

struct Click {
  std::string path;
  int column = kPreviewColumnAction;
  unsigned keys = 0;
};

struct RulesCase {
  const char* name;
  bool sync;
  std::vector<NodeSpec> tree;
  std::vector<Click> clicks;
  std::vector<std::string> wantOutcomes;  // per click: "reload", "beep", "reveal <path>", "none", "deselect"
  std::vector<int> wantModes;             // parallel to `tree`
  // existing, skipped, delete, copy A to B, copy B to A, attributes A to B, attributes B to A, total
  std::vector<std::int64_t> wantTallies;
  std::vector<std::string> wantAdditions = {};
  std::string source = "/nowhere/A";
  bool trash = false;                   // the task moves deletions to the trash
  std::vector<std::string> wantIcons = {};  // parallel to `tree`, when given
};

void PrintTo(const RulesCase& c, std::ostream* os) { *os << c.name; }

std::vector<std::string> Names(const std::string& path) {
  std::vector<std::string> names;
  for (std::size_t start = 0, end; start < path.size(); start = end + 1) {
    end = std::min(path.find('/', start), path.size());
    names.push_back(path.substr(start, end - start));
  }
  return names;
}

// The task tree of `c` (parents before children), counted as a scan counts it; the root is a
// folder with nothing to do.
std::vector<TaskTree> MakeTrees(const RulesCase& c, RunTallies& tallies) {
  std::vector<TaskTree> trees(1);
  TaskTree& tree = trees[0];
  tree.source = c.source;
  tree.dest = "/nowhere/B";
  tree.gIsSyncOn = c.sync;
  tree.gIsMoveToTrash = c.trash;
  tree.root.hasSubItems = true;
  tallies.Count(kCopyModeNothing, 1);
  for (const NodeSpec& item : c.tree) {
    const std::vector<std::string> names = Names(item.path);
    ScanNode* parent = &tree.root;
    for (std::size_t i = 0; i + 1 < names.size(); ++i) {
      parent = &*std::find_if(parent->subItems.begin(), parent->subItems.end(),
                              [&](const ScanNode& n) { return n.name == names[i]; });
    }
    ScanNode& node = parent->subItems.emplace_back();
    node.name = names.back();
    node.copyMode = item.mode;
    node.ifSkipAddToExactIndex = item.skipKey;
    node.hasSubItems = item.path.back() == '/';
    tallies.Count(item.mode, 1);
    if (item.mode >= kCopyModeCopyAToB) ++tallies.runItemsToDo;
  }
  return trees;
}

struct Previewed {
  explicit Previewed(const RulesCase& c) : trees(MakeTrees(c, tallies)) {}

  FileSystemItem& At(const std::string& path) {
    FileSystemItem* item = &editor.rootItem(0);
    for (const std::string& name : Names(path)) {
      std::size_t i = 0;
      while (item->childAtIndex(i).relativeDict().name != name) ++i;
      item = &item->childAtIndex(i);
    }
    return *item;
  }

  RunTallies tallies;
  std::vector<TaskTree> trees;
  std::vector<std::vector<std::string>> additions{1};
  LinuxFileSystem fs;
  PreviewEditor editor{trees, tallies, additions, fs};
};

std::string Outcome(const PreviewClickResult& r) {
  if (r.deselectAll) return "deselect";
  if (r.beep) return "beep";
  if (!r.reveal.empty()) return "reveal " + r.reveal;
  return r.reload ? "reload" : "none";
}

class PreviewRules : public ::testing::TestWithParam<RulesCase> {};

TEST_P(PreviewRules, ClicksGiveModesTalliesAndIndexAdditions) {
  const RulesCase& c = GetParam();
  Previewed p(c);
  std::vector<std::string> outcomes;
  for (const Click& click : c.clicks) {
    outcomes.push_back(Outcome(p.editor.ClickTheRow(&p.At(click.path), click.column, click.keys)));
  }
  std::vector<int> modes;
  std::vector<std::string> icons;
  for (const NodeSpec& item : c.tree) {
    modes.push_back(p.At(item.path).copyMode());
    icons.emplace_back(p.At(item.path).iconName());
  }
  std::vector<std::int64_t> shown;
  for (const PreviewTally& tally : PreviewTallies(p.tallies)) shown.push_back(tally.value);

  EXPECT_EQ(outcomes, c.wantOutcomes);
  EXPECT_EQ(modes, c.wantModes);
  EXPECT_EQ(shown, c.wantTallies);
  EXPECT_EQ(p.additions[0], c.wantAdditions);
  if (!c.wantIcons.empty()) {
    EXPECT_EQ(icons, c.wantIcons);
  }
}

INSTANTIATE_TEST_SUITE_P(
    PreviewEditor, PreviewRules,
    ::testing::Values(
        RulesCase{"KeepingAFileKeepsTheFoldersBeingDeletedAndTheyStayKept", true,
                  {{"d/", 7}, {"d/e/", 7}, {"d/e/f", 7}, {"d/g", 7}}, {{"d/e/f"}, {"d/e/f"}},
                  {"reload", "reload"}, {-7, -7, 7, 7}, {1, 2, 2, 0, 0, 0, 0, 2}},
        RulesCase{"CopyingAFileOfASwitchedOffFolderBringsItsFoldersBack", true,
                  {{"d/", 1}, {"d/e/", 2}, {"d/e/f", 2}, {"d/e/g", 2}, {"h", 4}}, {{"d/"}, {"d/e/f"}},
                  {"reload", "reload"}, {1, 2, 2, -2, 4}, {2, 1, 0, 3, 0, 0, 0, 3}},
        RulesCase{"AChildAlreadyOffIsCountedOnce", true,
                  {{"d/", 2}, {"d/f", 2}, {"d/g", 2}, {"m", 8}}, {{"d/f"}, {"d/"}, {"m"}},
                  {"reload", "reload", "reload"}, {-2, -2, -2, -8}, {1, 4, 0, 0, 0, 0, 0, 0}},
        RulesCase{"OnlyAnActiveReplacementOfASyncCanBeReversed", true,
                  {{"f", 4}, {"g", 2}, {"h", 5}}, {{"f", 1, kOption}, {"g", 1, kOption}, {"h"}, {"h", 1, kOption}},
                  {"reload", "beep", "reload", "beep"}, {5, 2, -5}, {1, 1, 0, 1, 1, 0, 0, 2}},
        RulesCase{"ABackupsReplacementCannotBeReversed", false,
                  {{"f", 4}}, {{"f", 1, kOption}}, {"beep"}, {4}, {1, 0, 0, 1, 0, 0, 0, 1}},
        RulesCase{"ItemsKnownToTheIndexJoinItsAdditionsWhileOff", true,
                  {{"x", 7, 1}, {"y", 6, 0}, {"z", 3}}, {{"x"}, {"y"}, {"z"}, {"y"}},
                  {"reload", "reload", "reload", "reload"}, {-7, 6, -3}, {1, 2, 1, 0, 0, 0, 0, 1},
                  {"/nowhere/A/x"}},
        RulesCase{"AFolderDeletionAndItsFileLeaveAndRejoinTheAdditionsTogether", true,
                  {{"d/", 7, 1}, {"d/f", 7, 1}}, {{"d/f"}, {"d/"}, {"d/f"}},
                  {"reload", "reload", "reload"}, {-7, -7}, {1, 2, 0, 0, 0, 0, 0, 0},
                  {"/nowhere/A/d", "/nowhere/A/d/f"}},
        RulesCase{"ControlClickRevealsASideThatExists", true,
                  {{"etc/", 1}}, {{"etc/", kSideA, kControl}, {"etc/", kSideB, kControl}, {"etc/", kSideA}, {"etc/", 3}},
                  {"reveal /etc", "beep", "none", "deselect"}, {1}, {2, 0, 0, 0, 0, 0, 0, 0}, {}, "/"},
        RulesCase{"ATaskThatTrashesShowsItsDeletionsSwitchedOffOrNotAsTrash", true,
                  {{"d/", 7}, {"d/f", 7}, {"g", 6}, {"h", 2}}, {{"g"}}, {"reload"}, {7, 7, -6, 2},
                  {1, 1, 2, 1, 0, 0, 0, 3}, {}, "/nowhere/A", true,
                  {"icnPreviewTrash", "icnPreviewTrash", "icnPreviewTrash", "icnPreviewViolet"}}),
    [](const auto& info) { return std::string(info.param.name); });

TEST(PreviewEditor, SearchFindsTheItemsToBeDeletedInOutlineOrder) {
  Previewed p({"", true, {{"a/", 1}, {"a/x", 7}, {"a/k", 7}, {"b", 2}, {"c/", 1}, {"c/y", 6}}, {}, {}, {}, {}});
  p.editor.ClickTheRow(&p.At("a/k"), kPreviewColumnAction, 0);  // switched off: no longer to be deleted
  FileSystemItem* x = &p.At("a/x");
  FileSystemItem* y = &p.At("c/y");
  EXPECT_EQ(p.editor.SearchNextOrPreviousItem(nullptr, false), x);
  EXPECT_EQ(p.editor.SearchNextOrPreviousItem(x, false), y);
  EXPECT_EQ(p.editor.SearchNextOrPreviousItem(y, false), nullptr);
  EXPECT_EQ(p.editor.SearchNextOrPreviousItem(nullptr, true), y);
  EXPECT_EQ(p.editor.SearchNextOrPreviousItem(y, true), x);
}

}  // namespace
}  // namespace marigold
