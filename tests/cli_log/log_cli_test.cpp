// The command line leaves, reads back and mails the run log as the preferences say.
#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>

#include "support/cli_runner.h"
#include "support/smtp_test_server.h"

namespace marigold::cli_testing {
namespace {

class LogCli : public ::testing::Test {
 protected:
  void SetUp() override {
    WriteFileText(home.Path("A/f.txt"), "one");
    WriteFileText(home.Path("A/caf\xe9.txt"), "two");
    std::filesystem::create_directories(home.Path("B"));
  }
  std::vector<std::string> Logs() const {
    std::vector<std::string> names;
    if (std::filesystem::exists(LogFolder()))
      for (const auto& entry : std::filesystem::directory_iterator(LogFolder())) names.push_back(entry.path().filename());
    return names;
  }
  std::string LogFolder() const { return home.data() + "/Quillon/Marigold 4/Log Files"; }
  CliResult Sync(std::vector<std::string> extra = {}) const {
    std::vector<std::string> args = {"sync", home.Path("A"), home.Path("B")};
    args.insert(args.end(), extra.begin(), extra.end());
    return home.Run(args);
  }

  CliHome home;
};

TEST_F(LogCli, EveryRunLeavesItsLogAndLogReadsItBack) {
  ASSERT_EQ(home.Run({"prefs", "set", "prefSaveLogFile=1", "prefLogFileFormat=1"}).status, 0);
  // Only on errors (the default) and a clean run: no file.
  EXPECT_EQ(Sync().status, 0);
  EXPECT_TRUE(Logs().empty());
  EXPECT_EQ(Sync({"--dry-run", "--set", "prefSaveLogFileWhen=1"}).status, 0);
  EXPECT_TRUE(Logs().empty());

  std::filesystem::remove(home.Path("B/caf\xe9.txt"));
  const CliResult run = Sync({"--set", "prefSaveLogFileWhen=1"});
  ASSERT_EQ(run.status, 0) << run.err;
  ASSERT_EQ(Logs().size(), 1u);
  EXPECT_EQ(Logs()[0].substr(0, 6), "MGLog_");
  EXPECT_NE(run.out.find("Log file: " + LogFolder() + "/MGLog_"), std::string::npos);

  const CliResult shown = home.Run({"log"});
  EXPECT_EQ(shown.status, 0);
  EXPECT_NE(shown.out.find("\n\u2022 Errors: 0\n"), std::string::npos);
  EXPECT_NE(shown.out.find("- by quillon.com\n"), std::string::npos);
  EXPECT_NE(shown.out.find("Copied file \"" + home.Path("A/caf\xe9.txt") + "\"\n"), std::string::npos);
  EXPECT_EQ(shown.out.find('\r'), std::string::npos);
}

TEST_F(LogCli, ErrorsAndListReadSavedLogs) {
  std::filesystem::create_directories(LogFolder());
  WriteFileText(LogFolder() + "/MGLog_2024_01_01_00_00_00.txt",
                "\u2022 Task: x\n\u2022 Errors: 2\n\u2022 Task 1 of 2 (Session: \"s\") - Errors: 0\nCopied\n"
                "\u2022 Task 2 of 2 (Session: \"s\") - Errors: 2\n\u221A Can't copy a\n\u221A Can't copy b\n");
  WriteFileText(LogFolder() + "/MGLog_2024_01_02_00_00_00.txt", "\u2022 Errors: 0\n");
  std::filesystem::last_write_time(LogFolder() + "/MGLog_2024_01_01_00_00_00.txt",
                                   std::filesystem::file_time_type::clock::now() - std::chrono::hours(24));
  WriteFileText(LogFolder() + "/notes.txt", "not a log");

  const CliResult errors = home.Run({"log", "--errors", LogFolder() + "/MGLog_2024_01_01_00_00_00.txt"});
  EXPECT_EQ(errors.out, "\u2022 Task 2 of 2 (Session: \"s\") - Errors: 2\n\u221A Can't copy a\n\u221A Can't copy b\n");
  EXPECT_EQ(home.Run({"log", "--list"}).out, LogFolder() + "/MGLog_2024_01_02_00_00_00.txt\tErrors: 0\n" + LogFolder() +
                                                 "/MGLog_2024_01_01_00_00_00.txt\tErrors: 2\n");
  EXPECT_EQ(home.Run({"log", home.Path("missing.txt")}).status, 2);
}

TEST_F(LogCli, PrefsSetChecksLikeThePanelAndWritesNothingOnFailure) {
  ASSERT_EQ(home.Run({"prefs", "show"}).status, 0);
  const std::string before = ReadFileText(home.PreferencesFile());
  const CliResult refused = home.Run({"prefs", "set", "prefDeleteLogsOn=1", "prefDeleteLogsField=0"});
  EXPECT_EQ(refused.status, 2);
  EXPECT_NE(refused.err.find("The Delete Logs text field must contain a value greater than zero."), std::string::npos);
  EXPECT_EQ(home.Run({"prefs", "set", "prefSendEmail=1"}).status, 2);  // no account yet
  EXPECT_EQ(home.Run({"prefs", "set", "prefNoSuchThing=1"}).status, 2);
  EXPECT_EQ(ReadFileText(home.PreferencesFile()), before);
}

TEST_F(LogCli, MailAccountTestMessageAndTheRunsReport) {
  testing::TestSmtpServer server;
  const std::string port = std::to_string(server.port());
  const CliResult set = home.Run({"prefs", "mail", "--to", "ann@example.org, bob@example.org", "--from",
                                  "marigold@example.org", "--account", "ann", "--smtp", "127.0.0.1", "--port", port,
                                  "--tls", "no"},
                                 "s3cret\n");
  ASSERT_EQ(set.status, 0) << set.err;
  EXPECT_EQ(ReadFileText(home.PreferencesFile()).find("s3cret"), std::string::npos);
  EXPECT_EQ(home.Run({"prefs", "mail", "--test"}).status, 0);
  ASSERT_EQ(server.Messages(2).size(), 2u);

  const CliResult run = Sync({"--set", "prefSendEmail=1", "--set", "prefSendEmailWhen=1"});
  ASSERT_EQ(run.status, 0) << run.err;
  const std::vector<std::string> messages = server.Messages(4);
  ASSERT_EQ(messages.size(), 4u);
  EXPECT_NE(messages[2].find("to: ann@example.org\nsubject: Marigold Log Message: OK\n"), std::string::npos);
  EXPECT_NE(messages[3].find("Copied file \"" + home.Path("A/caf\\xE9.txt") + "\"\n"), std::string::npos);

  EXPECT_EQ(home.Run({"prefs", "mail", "--smtp", "127.0.0.1", "--port", "1"}, "x\n").status, 0);
  const CliResult failed = home.Run({"prefs", "mail", "--test"});
  EXPECT_EQ(failed.status, 1);
  EXPECT_NE(failed.err.find("ann@example.org: "), std::string::npos);
}

}  // namespace
}  // namespace marigold::cli_testing
