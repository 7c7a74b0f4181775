// Exact synchronisation from the command line across several runs: the index kept in the support
// folder carries deletions made on either side.
#include <gtest/gtest.h>

#include <unistd.h>

#include <filesystem>

#include "support/cli_runner.h"
#include "support/tree_values.h"

namespace marigold::cli_testing {
namespace {

using trees::Tree;

TEST(ExactSyncCli, DeletionsOnEitherSideAreCarriedAcrossRuns) {
  CliHome box;
  const std::string a = box.Path("A");
  const std::string b = box.Path("B");
  trees::Build(a, {{"keep.txt", "k"}, {"a.txt", "a"}, {"docs/", ""}, {"docs/d.txt", "d"}});
  trees::Build(b, {{"b.txt", "b"}});
  const std::vector<std::string> sync{"sync", "--exact", a, b};

  // First run: nothing is known to be deleted, so both sides get everything.
  CliResult first = box.Run(sync);
  ASSERT_EQ(first.status, 0) << first.out << first.err;
  const Tree all{{"keep.txt", "k"}, {"a.txt", "a"}, {"b.txt", "b"}, {"docs/", ""}, {"docs/d.txt", "d"}};
  EXPECT_EQ(trees::Read(a), all);
  EXPECT_EQ(trees::Read(b), all);

  // Deleted on B, and a folder deleted on A: both deletions cross over.
  ASSERT_EQ(::unlink((b + "/a.txt").c_str()), 0);
  ASSERT_EQ(::unlink((a + "/docs/d.txt").c_str()), 0);
  ASSERT_EQ(::rmdir((a + "/docs").c_str()), 0);
  trees::Build(b, {{"new-on-b.txt", "n"}});
  CliResult second = box.Run(sync);
  ASSERT_EQ(second.status, 0) << second.out << second.err;
  const Tree after{{"keep.txt", "k"}, {"b.txt", "b"}, {"new-on-b.txt", "n"}};
  EXPECT_EQ(trees::Read(a), after);
  EXPECT_EQ(trees::Read(b), after);

  // A plain synchronisation of the pair forgets the index: a later exact run starts afresh and
  // brings back what one side lacks instead of deleting it.
  ASSERT_EQ(box.Run({"sync", a, b}).status, 0);
  ASSERT_EQ(::unlink((a + "/b.txt").c_str()), 0);
  ASSERT_EQ(box.Run(sync).status, 0);
  EXPECT_EQ(trees::Read(a), after);
}

// A side whose folder was swapped for one holding only a stray hidden file (a mount point without
// its volume) keeps none of what the index recorded: the task is skipped, nothing is deleted.
TEST(ExactSyncCli, ASideThatLostEveryIndexedItemDeletesNothing) {
  CliHome box;
  const std::string a = box.Path("A");
  const std::string b = box.Path("B");
  const trees::Tree all{{"a.txt", "a"}, {"docs/", ""}, {"docs/d.txt", "d"}};
  trees::Build(a, all);
  const std::vector<std::string> sync{"sync", "--exact", a, b};
  ASSERT_EQ(box.Run(sync).status, 0);
  std::filesystem::remove_all(b);
  trees::Build(b, {{".hidden", "h"}});

  CliResult run = box.Run(sync);
  EXPECT_EQ(run.status, 1) << run.out << run.err;
  EXPECT_NE(run.out.find("Errors: 1"), std::string::npos) << run.out;
  EXPECT_EQ(trees::Read(a), all);
}

}  // namespace
}  // namespace marigold::cli_testing
