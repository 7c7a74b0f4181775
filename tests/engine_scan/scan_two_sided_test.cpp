// The scan lists side B on a helper thread while it lists side A; the tree, its order, every
// decision, counter and message must be those of a scan that lists one side after the other.
#include <gtest/gtest.h>

#include <tuple>

#include "engine/tree_text.h"
#include "support/fault_file_system.h"
#include "scan_test_support.h"

namespace marigold::scantest {
namespace {

struct Outcome {
  std::string tree;
  std::vector<std::string> errors;
  std::vector<std::int64_t> counters;
};

Outcome ScanWith(FileSystem* fs, TaskKind kind, const std::string& a, const std::string& b) {
  ScanHarness h{kind, fs};
  Outcome outcome;
  h.errors.SetErrorObserver([&](const std::string& message) { outcome.errors.push_back(message); });
  EXPECT_TRUE(h.Scan(a, b));
  TaskTree tree;
  tree.root = h.root;
  outcome.tree = DescribeTaskTree(tree);
  const auto& scan = h.state.scan;
  outcome.counters = {scan.gAFilesScanned, scan.gBFilesScanned, scan.gAFoldersScanned, scan.gBFoldersScanned,
                      h.state.gItemsToDo};
  return outcome;
}

TEST(ScanTwoSided, SameTreeAsListingOneSideAfterTheOther) {
  const std::string raw = "\xff\xfe-\xe9.bin";
  const std::string nfd = "Cafe\xcc\x81", nfc = "Caf\xc3\xa9";
  TempTree a{{{raw, "x"}, {nfd + "/menu", "a"}, {"line\nbreak/in", "y"}, {"Readme", "new", T + 9},
              {"only-a/deep/er/f", "1"}, {"both/x", "same"}, {"both/y", "newer", T + 5},
              {"link", "both", {}, {}, 0, true}, {" lead", "s"}, {"tail ", "s"}, {"émoji-😀", "e"}}};
  TempTree b{{{nfc + "/menu", "b"}, {"README", "old"}, {"Readme", "old"}, {"only-b/sub/g", "2"},
              {"both/x", "same"}, {"both/y", "older"}, {"both/z", "b-only"}, {"émoji-😀", "other", T + 50}}};
  // More folders than the helper keeps ready, some of them left out of the walk.
  TreeShape manyA, manyB;
  for (int i = 0; i < 40; ++i) {
    const std::string folder = "many/d" + std::to_string(i) + "/sub/";
    manyA.push_back({folder + "f", "a", T + i % 3});
    manyB.push_back({folder + (i % 4 == 0 ? "g" : "f"), "b"});
  }
  TempTree manyTreeA{manyA}, manyTreeB{manyB};
  LinuxFileSystem twoSided;
  FaultFileSystem oneSided{twoSided};  // keeps the default: one call at a time
  ASSERT_TRUE(twoSided.AllowsConcurrentCalls());
  for (auto [kind, pathA, pathB] : {std::tuple{TaskKind::kSync, a.Path(), b.Path()},
                                    std::tuple{TaskKind::kExactBackup, a.Path(), b.Path()},
                                    std::tuple{TaskKind::kSync, manyTreeA.Path(), manyTreeB.Path()}}) {
    const Outcome expected = ScanWith(&oneSided, kind, pathA, pathB);
    const Outcome got = ScanWith(&twoSided, kind, pathA, pathB);
    EXPECT_EQ(got.tree, expected.tree);
    EXPECT_EQ(got.errors, expected.errors);
    EXPECT_EQ(got.counters, expected.counters);
    EXPECT_NE(expected.tree.find(pathA == a.Path() ? "only-b" : "d36"), std::string::npos);
  }
}

}  // namespace
}  // namespace marigold::scantest
