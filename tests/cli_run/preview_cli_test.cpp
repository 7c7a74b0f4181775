// The preview of an interactive exact synchronisation on a terminal: a deletion switched off is
// not carried out, the rest is, and the next exact run proposes that deletion again instead of
// taking the kept file for a new one.
#include <gtest/gtest.h>

#include <unistd.h>

#include "support/cli_runner.h"
#include "support/tree_values.h"

namespace marigold::cli_testing {
namespace {

using trees::Tree;

TEST(PreviewCli, ASwitchedOffDeletionIsKeptAndProposedAgainByTheNextExactRun) {
  CliHome box;
  const std::string a = box.Path("A");
  const std::string b = box.Path("B");
  trees::Build(a, {{"keep.txt", "k"}, {"x.txt", "x"}, {"y.txt", "y"}});
  const std::vector<std::string> sync{"sync", "--exact", a, b};
  ASSERT_EQ(box.Run(sync).status, 0);
  ASSERT_EQ(::unlink((a + "/x.txt").c_str()), 0);
  ASSERT_EQ(::unlink((a + "/y.txt").c_str()), 0);

  // The rows: 1 x.txt, 2 y.txt (keep.txt has nothing to do). A typo first, then x's deletion off.
  std::vector<std::string> previewed = sync;
  previewed.insert(previewed.end(), {"--interactive", "--set", "prefPreview=1", "--set", "prefAskConfirmation=0"});
  const CliResult shown = box.Run(previewed, "of 1\noff 1\ngo\n");
  ASSERT_EQ(shown.status, 0) << shown.err;
  EXPECT_NE(shown.err.find("Preview - Exact Sync"), std::string::npos) << shown.err;
  EXPECT_NE(shown.err.find("Type \"off N\""), std::string::npos) << shown.err;
  EXPECT_NE(shown.err.find("1  off (delete in B)"), std::string::npos) << shown.err;
  EXPECT_NE(shown.err.find("existing 1, skipped 1, delete 1"), std::string::npos) << shown.err;
  EXPECT_EQ(trees::Read(a), (Tree{{"keep.txt", "k"}}));
  EXPECT_EQ(trees::Read(b), (Tree{{"keep.txt", "k"}, {"x.txt", "x"}}));

  // Without the preview's record of x the next run would copy x back to A.
  ASSERT_EQ(box.Run(sync).status, 0);
  EXPECT_EQ(trees::Read(a), (Tree{{"keep.txt", "k"}}));
  EXPECT_EQ(trees::Read(b), (Tree{{"keep.txt", "k"}}));
}

}  // namespace
}  // namespace marigold::cli_testing
