// The questions an interactive run asks on the terminal, answered the way a user at a shell
// would script them: the real program, its answers on its standard input.
#include <gtest/gtest.h>

#include "support/cli_runner.h"
#include "support/tree_values.h"

namespace marigold::conflicts_test {
namespace {

using cli_testing::CliResult;
using trees::Tree;

// The real program in a home of its own, in a UTF-8 locale whatever the machine's.
struct Terminal : cli_testing::CliHome {
  Terminal() { SetEnv("LC_ALL", "C.UTF-8"); }
};

bool Has(const std::string& text, const std::string& part) { return text.find(part) != std::string::npos; }

struct ConfirmCase {
  const char* name;
  std::vector<std::string> flags;
  const char* answers;
  bool asked;
  bool copied;
};

class RunConfirmation : public ::testing::TestWithParam<ConfirmCase> {};

TEST_P(RunConfirmation, IsAskedBeforeAnInteractiveRun) {
  const ConfirmCase& c = GetParam();
  Terminal temp;
  trees::Build(temp.Path("Photos"), {{"a.txt", "a"}});
  trees::Build(temp.Path("Backup"), {});
  std::vector<std::string> args{"sync", temp.Path("Photos"), temp.Path("Backup")};
  args.insert(args.end(), c.flags.begin(), c.flags.end());

  const CliResult shell = temp.Run(args, c.answers);

  EXPECT_EQ(shell.status, 0) << shell.err;
  EXPECT_EQ(Has(shell.err, "Starting task:\nAre you sure you want to synchronize the folder \"Photos\" with the "
                           "folder \"Backup\"? [y/N]"),
            c.asked)
      << shell.err;
  EXPECT_EQ(trees::Read(temp.Path("Backup")).size(), c.copied ? 1u : 0u);
  EXPECT_EQ(Has(shell.out, "Cancelled: nothing was done."), c.asked && !c.copied) << shell.out;
}

INSTANTIATE_TEST_SUITE_P(
    Terminal, RunConfirmation,
    ::testing::Values(ConfirmCase{"Yes", {"--interactive"}, "y\n", true, true},
                      ConfirmCase{"No", {"--interactive"}, "n\n", true, false},
                      ConfirmCase{"AnEmptyLineIsNo", {"--interactive"}, "\n", true, false},
                      ConfirmCase{"NoAnswerIsNo", {"--interactive"}, "", true, false},
                      ConfirmCase{"NotAskedWhenThePreferenceIsOff",
                                  {"--interactive", "--set", "prefAskConfirmation=0"}, "", false, true},
                      ConfirmCase{"NotAskedOfAnUnattendedRun", {}, "", false, true},
                      ConfirmCase{"NotAskedOfADryRun", {"--interactive", "--dry-run"}, "", false, false}),
    [](const auto& info) { return std::string(info.param.name); });

// Brings A and B into step once, then changes `name` on both sides after that run, A last.
std::int64_t BothChangedAfterARun(const Terminal& temp, const std::vector<std::string>& flags) {
  trees::Build(temp.Path("A"), {{"f.txt", "one"}});
  trees::Build(temp.Path("B"), {});
  std::vector<std::string> args{"sync", temp.Path("A"), temp.Path("B")};
  args.insert(args.end(), flags.begin(), flags.end());
  EXPECT_EQ(temp.Run(args, "").status, 0);
  const std::int64_t last = trees::BackupDate(temp.Path("B")).value_or(0);
  EXPECT_GT(last, 0);
  trees::Write(temp.Path("A/f.txt"), "A edit");
  trees::SetModified(temp.Path("A/f.txt"), last + 200);
  trees::Write(temp.Path("B/f.txt"), "B edit");
  trees::SetModified(temp.Path("B/f.txt"), last + 100);
  return last;
}

TEST(ReplacePrompt, TwoChangedFilesCanChangeDirection) {
  Terminal temp;
  BothChangedAfterARun(temp, {});

  const CliResult shell = temp.Run({"sync", temp.Path("A"), temp.Path("B"), "--interactive", "--set", "conflictSyncAsk=1",
                                "--set", "prefAskConfirmation=0"},
                               "d\nr\n");

  EXPECT_EQ(shell.status, 0) << shell.err;
  EXPECT_EQ(trees::Read(temp.Path("A")), (Tree{{"f.txt", "B edit"}}));
  EXPECT_EQ(trees::Read(temp.Path("B")), (Tree{{"f.txt", "B edit"}}));
  const std::string& err = shell.err;
  EXPECT_TRUE(Has(err, "Replace File\nSince the last Sync/Backup (")) << err;
  EXPECT_TRUE(Has(err, ")\nboth the following source and destination files have been modified.\n"
                       "The source file has the most recent modification date/time.\n"
                       "Are you sure you want the source replaces the destination anyway?\n"))
      << err;
  EXPECT_TRUE(Has(err, "  A: \"" + temp.Path("A/f.txt") + "\"  Modification Date: ")) << err;
  EXPECT_TRUE(Has(err, "  (The source is going to replace the destination)\n"
                       "  r) Replace: Replace the destination file and continue (default)\n"
                       "  s) Skip: Skip these files and continue\n"
                       "  t) Stop\n"
                       "  d) Change direction\n"))
      << err;
  // Asked again with the direction reversed.
  EXPECT_TRUE(Has(err, "  (The destination is going to replace the source)\n"
                       "  r) Replace: Replace the source file and continue (default)\n"))
      << err;
}

TEST(ReplacePrompt, StopEndsTheRunWithNothingDone) {
  Terminal temp;
  const std::int64_t last = BothChangedAfterARun(temp, {"--backup"});

  const CliResult shell = temp.Run({"sync", temp.Path("A"), temp.Path("B"), "--backup", "--interactive", "--set",
                                "conflictBackupAsk=1", "--set", "prefAskConfirmation=0"},
                               "t\n");

  EXPECT_EQ(shell.status, 1) << shell.err;
  EXPECT_TRUE(Has(shell.out, "Stopped.")) << shell.out;
  EXPECT_EQ(trees::Read(temp.Path("B")), (Tree{{"f.txt", "B edit"}}));
  EXPECT_EQ(trees::BackupDate(temp.Path("B")), last);
  EXPECT_FALSE(Has(shell.err, "d) Change direction")) << shell.err;
}

TEST(ReplacePrompt, AnAddedDestinationFileIsShownWithAMissingSource) {
  Terminal temp;
  trees::Build(temp.Path("A"), {{"f.txt", "one"}});
  trees::Build(temp.Path("B"), {});
  ASSERT_EQ(temp.Run({"sync", temp.Path("A"), temp.Path("B"), "--backup", "--exact"}, "").status, 0);
  trees::Write(temp.Path("B/added.txt"), "new on B");

  // An unknown answer asks again; "d" does nothing where the direction cannot change.
  const CliResult shell = temp.Run({"sync", temp.Path("A"), temp.Path("B"), "--backup", "--exact", "--interactive", "--set",
                                "conflictExactBackupAsk=1", "--set", "prefAskConfirmation=0"},
                               "x\nd\ns\n");

  EXPECT_EQ(shell.status, 0) << shell.err;
  EXPECT_EQ(trees::Read(temp.Path("B")), (Tree{{"added.txt", "new on B"}, {"f.txt", "one"}}));
  const std::string& err = shell.err;
  EXPECT_TRUE(Has(err, "Delete File\nSince the last Sync/Backup (")) << err;
  EXPECT_TRUE(Has(err, ")\nthe source parent folder has been deleted, and the destination file has been added.\n"
                       "MG is going to delete the destination file.\n"
                       "Are you sure you want to delete the destination file anyway?\n"))
      << err;
  EXPECT_TRUE(Has(err, "  A: \"" + temp.Path("A/added.txt") + "\"  Modification Date: --\n")) << err;
  EXPECT_TRUE(Has(err, "  r) Delete: Delete the destination file and continue (default)\n"
                       "  s) Skip: Skip this file and continue\n"
                       "  t) Stop\n> "))
      << err;
  EXPECT_FALSE(Has(err, "d) Change direction")) << err;
  // Asked three times: the unknown answer, the inert "d", and the Skip.
  std::size_t prompts = 0;
  for (std::size_t at = err.find("Delete File\n"); at != std::string::npos; at = err.find("Delete File\n", at + 1)) ++prompts;
  EXPECT_EQ(prompts, 3u);
}

}  // namespace
}  // namespace marigold::conflicts_test
