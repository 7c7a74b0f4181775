#include <gtest/gtest.h>

#include "logging/run_log_text.h"
#include "model/document_model.h"
#include "options/conflicts_panel.h"
#include "options/settings_log.h"
#include "platform/file_system.h"
#include "support/temp_folder.h"
#include "util/quillon_additions.h"
#include "util/well_scramble.h"

namespace marigold {
namespace {

const LogHostInfo kHost{"Debian GNU/Linux 12 (bookworm)", "6.1.0-18-amd64", "52:54:00:12:34:56", "ann", "Ann Smith",
                        1000, 1000, 0, 0};
const LogDateFormat kFormat{"en_US", "UTC"};
constexpr double kStart = 1709647629;  // Tuesday 5 March 2024, 14:07:09 UTC

std::string Repeat(const std::string& text, int n) {
  std::string out;
  for (int i = 0; i < n; ++i) out += text;
  return out;
}

PlistDict Task(std::int64_t index, const std::string& source, const std::string& dest, std::int64_t errors,
               const std::string& detail) {
  PlistDict record{{"taskIndex", index},           {"gSourceFolder", source},   {"gDestFolder", dest},
                   {"gAFoldersScanned", 2},        {"gAFilesScanned", 5},       {"gBFoldersScanned", 1},
                   {"gBFilesScanned", 3},          {"gTotError", errors},       {"gDetailedLogText", detail},
                   {"gBFoldersCreated", 1},        {"gBFilesCopied", 2},        {"gBFilesReplaced", 1},
                   {"gBItemVisible", 3},           {"gBItemInvisible", 1},      {"gBFilesDeleted", 4}};
  return record;
}

struct LogRun {
  TempFolder temp;
  std::string a1 = temp.Join("A1"), b1 = temp.Join("B1"), a2 = temp.Join("A2"), b2 = temp.Join("b2.txt");
  RunState state;
  PlistDict document = NewTemplate();
  PlistDict prefs{{"prefOnError", 3},          {"prefSaveLogFile", 1},   {"prefSaveLogFileWhen", 2},
                  {"prefLogFileFormat", 1},    {"prefLogKind", 2},       {"prefPathLogFolder", "/logs"},
                  {"prefSendEmail", 0},        {"prefAskConfirmation", 1},
                  {"prefSendEmailDict", SetWellDict(PlistDict{{"mSendEmailTo", "ann@example.org"}})}};

  explicit LogRun(std::int64_t logKind) {
    temp.WriteFile("A1/x", "");
    temp.WriteFile("B1/x", "");
    temp.WriteFile("A2/x", "");
    temp.WriteFile("b2.txt", "");
    state.gMakeDetailedLog = logKind == 2;
    state.gMakeErrorsLog = logKind == 3;
    prefs.Set("prefLogKind", logKind);
    state.mExecutedBy = kExecutedByTimer;
    state.gGlobalError = 1;
    state.gStartSyncDateTime = DateFromUnixSeconds(kStart);
    state.gEndSyncDateTime = DateFromUnixSeconds(kStart + 3725);
    PlistArray tasks{Task(0, a1, b1, 0, "Copied \"x\"\r"), Task(1, a2, b2, 1, "\u221A Can't copy \"y\"\r")};
    state.logSessionArray.push_back(PlistDict{{"sessionIndex", 0}, {"logTaskArray", tasks}, {"gTotError", 1}});
  }

  std::string Text(bool allSessions = false) {
    return RunLogText(state, document, prefs, SystemFileSystem(), kHost, kFormat, allSessions).MakeLog();
  }
};

std::string ExpectedHeader() {
  return Repeat("=", 85) + "\r\u2022 Marigold Linux v. 4.0 (Build 400) - 64bit - https://www.quillon.com/marigold/\r" +
         Repeat("=", 85) + "\r" +
         "\r\u2022 OS Info:\r\tOS X version: Debian GNU/Linux 12 (bookworm) (Build 6.1.0-18-amd64)"
         "\r\tMacAddress: 52:54:00:12:34:56\r\tCurrent User: ann (Ann Smith) - User id: 1000 - Group id: 1000"
         "\r\tEffective User id: 0 - Effective Group id: 0\r\r" +
         Repeat("|", 85) + "\r" +
         "\u2022 Task: executed by the timer list\r\r\u2022 Errors: 1\r\r"
         "\u2022 Timing: \r\tStart at: Tuesday, March 05, 2024 - 14:07:09\r\tEnd at:  Tuesday, March 05, 2024 - 15:09:14"
         "\r\tElapsed Time (HMS): 01:02:05\r";
}

std::string ExpectedPreferences(const char* kind) {
  return std::string("\r\u2022 Preferences: \r\t\u2022 General: \r") +
         "\t\tSync and Quit at launch: No\r\t\tAsk for confirmation: Yes\r\t\tPreview before copying: No\r"
         "\t\tExpand the preview: No\r\t\tBeep when done: No\r\t\tShut down when done: No\r\t\tQuit when done: No\r"
         "\t\tOn error: Ask what to do\r"
         "\t\u2022 Log: \r\t\tSave the log file: Yes (Only when there are errors)\r\t\tLog file format: RTF\r"
         "\t\tLog kind: " + kind + "\r\t\tLog folder: /logs\r\t\tSend the log via email: No\r\t\tEmail to: ann@example.org\r"
         "\t\u2022 Copy Mode: \r\t\tRun as root: No\r\t\tModification date tolerance (seconds): No\r\r";
}

std::string ExpectedTask(const LogRun& run, int n, const std::string& a, const std::string& b, const char* bKind,
                         int errors, const std::string& detail) {
  const std::string rule = Repeat("\u2026", 35) + "\r";
  std::string text = rule + "\u2022 Task " + std::to_string(n) + " of 2 (Session: \"Default Sync Session\") - Errors: " +
                     std::to_string(errors) + "\r" + rule + "1st Folder: \"" + a + "\"\r2nd " + bKind + ": \"" + b +
                     "\"\r\r";
  if (run.state.gMakeDetailedLog || run.state.gMakeErrorsLog) text += "Start\r--\r" + detail + "--\rEnd\r\r";
  text += "\u2022 Summary 1st Folder:\r\t" + a +
          "\r\tFolders Found: 2\r\tFiles Found: 5\r\t-\r\tFolders Created: 0\r\tFiles Replaced: 0"
          "\r\tFiles Copied (new additions): 0\r\tTotal of items copied: 0 visible + 0 invisible = 0\r\t-"
          "\r\tFolders Deleted: 0\r\tFiles Deleted: 0\r\r";
  text += "\u2022 Summary 2nd " + std::string(bKind) + ":\r\t" + b +
          "\r\tFolders Found: 1\r\tFiles Found: 3\r\t-\r\tFolders Created: 1\r\tFiles Replaced: 1"
          "\r\tFiles Copied (new additions): 2\r\tTotal of items copied: 3 visible + 1 invisible = 4\r\t-"
          "\r\tFolders Deleted: 0\r\tFiles Deleted: 4\r\r";
  return text;
}

TEST(RunLogText, TwoTasksWithAnErrorInEveryLogKind) {
  const std::pair<std::int64_t, const char*> kinds[] = {{1, "Summary only"}, {2, "Detailed"}, {3, "Errors only"}};
  for (const auto& [kind, title] : kinds) {
    LogRun run(kind);
    const PlistDict& session = *GetSessionDict(run.document, 0);
    const std::string expected = ExpectedHeader() + ExpectedPreferences(title) + Repeat("|", 85) +
                                 "\r\u2022 Session: \"Default Sync Session\" - Errors: 1\r" + Repeat("|", 85) +
                                 GetLog(*session.GetDict("settingsDict")) + ConflictsPanel::GetLog(session) +
                                 ExpectedTask(run, 1, run.a1, run.b1, "Folder", 0, "Copied \"x\"\r") +
                                 ExpectedTask(run, 2, run.a2, run.b2, "File", 1, "\u221A Can't copy \"y\"\r");
    EXPECT_EQ(run.Text(), expected) << title;
  }
}

TEST(RunLogText, StopSessionsAndOptionsSections) {
  LogRun run(2);
  run.state.mUserPressedStop = true;
  PlistDict& session = *GetSessionDict(run.document, 0);
  PlistDict& timers = *session.GetDict("timerDict");
  timers.Set("timerOn", 1);
  PlistDict& row = *(*timers.GetArray("timerArray"))[0].AsDict();
  row.Set("valid", 1);
  row.Set("start", DateFromUnixSeconds(kStart));
  row.Set("intervalOn", 1);
  row.Set("intervalDays", 2);
  row.Set("intervalHours", 1);
  row.Set("onlySunday", 0);
  session.GetDict("appleScriptDict")->Set("asStartOn", 1);
  session.GetDict("appleScriptDict")->Set("asStartText", "echo before\recho more");
  run.state.logSessionArray[0].AsDict()->Set("executiveExcludeArray", PlistArray{"/A1/skip"});

  const std::string text = run.Text(/*allSessions=*/true);
  for (const std::string part :
       {"\u2022 User Action: user pressed the Stop button.\r\r",
        "\r\u2022 Sessions: (1)\r\t1: Default Sync Session - Errors: 1\r\r\u2022 Preferences: ",
        "\u2022 Timers: \r\t1:\tStart at:\t\t05 Mar 2024, 14:07\r\t\tInterval:\t\t2 days, 01:00"
        "\r\t\tExecute On:\tMon, Tue, Wed, Thu, Fri, Sat\r",
        "\u2022 Exclude: \r\t1: /A1/skip\r",
        "\r\r\u2022 AppleScript: \r\tBefore Session: echo before\r\tAfter Session:    -- Write or paste here your AppleScript\r\r"})
    EXPECT_NE(text.find(part), std::string::npos) << part;
  // One session run on its own lists no sessions.
  EXPECT_EQ(run.Text(false).find("\u2022 Sessions: "), std::string::npos);
}

TEST(RunLogText, FileNameFollowsTheFormat) {
  EXPECT_EQ(LogFileName(DateFromUnixSeconds(kStart), 1, "UTC"), "MGLog_2024_03_05_14_07_09.rtf");
  EXPECT_EQ(LogFileName(DateFromUnixSeconds(kStart), 2, "Europe/Rome"), "MGLog_2024_03_05_15_07_09.txt");
}

}  // namespace
}  // namespace marigold
