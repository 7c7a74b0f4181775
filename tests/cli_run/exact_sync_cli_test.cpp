// Exact synchronisation from the command line across runs: the index kept in the support folder
// guards a side that lost what it held.
#include <gtest/gtest.h>

#include <filesystem>

#include "support/cli_runner.h"
#include "support/tree_values.h"

namespace marigold::cli_testing {
namespace {

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
