#include "logging/run_log_text.h"

#include <cmath>
#include <cstdio>
#include <set>

#include "logging/email_report.h"
#include "logging/preference_titles.h"
#include "logging/product_identity.h"
#include "logging/timer_log.h"
#include "model/document_model.h"
#include "options/conflicts_panel.h"
#include "options/settings_log.h"
#include "options/settings_titles.h"
#include "util/quillon_additions.h"
#include "util/strings_table.h"

namespace marigold {
namespace {

const std::string kHeaderRule = std::string(85, '=') + "\r";
const std::string kSessionRule(85, '|');
std::string TaskRule() {
  std::string rule;
  for (int i = 0; i < 35; ++i) rule += "\u2026";
  return rule + "\r";
}

std::string YesNo(bool yes) { return GLS(yes ? "Yes" : "No"); }

std::string Num(std::int64_t n) { return std::to_string(n); }

// The localised title of a choice, or "Unknown Value" for a tag without one.
std::string Title(const char* title) { return GLS(*title ? title : "Unknown Value"); }

// Replaces each "%d" of a localised format in turn.
std::string WithNumbers(std::string format, std::initializer_list<long> numbers) {
  std::size_t at = 0;
  for (long n : numbers) {
    at = format.find("%d", at);
    if (at == std::string::npos) break;
    const std::string text = std::to_string(n);
    format.replace(at, 2, text);
    at += text.size();
  }
  return format;
}

std::string SessionName(const PlistDict* session, std::int64_t index) {
  const PlistDict* console = session ? session->GetDict("consoleDict") : nullptr;
  const std::string name = console ? console->GetString("sessionName") : "";
  if (!name.empty()) return name;
  return GLS("Session") + " " + Num(index + 1);
}

// The first line of a script, for the log.
std::string FirstLine(const std::string& text) {
  std::string line = text;
  for (char& c : line)
    if (c == '\r') c = '\n';
  const std::size_t end = line.find_first_of("\v\n");
  return end == std::string::npos ? line : line.substr(0, end);
}

const char* ExecutedByText(int executedBy) {
  switch (executedBy) {
    case 1: return "executed by clicking on the button";
    case 2: return "executed by the timer list";
    case 3: return "executed by the Sync And Quit option";
    case 4: return "executed by the Sync And Logout option";
    case 5: return "executed from the command line";
    default: return "";
  }
}

}  // namespace

std::string GetFixedLogHeader(const LogHostInfo& host) {
  char product[256];
  std::snprintf(product, sizeof product, "%s %s %s (Build %s) - %dbit", kProductName, kProductEdition,
                (std::string("v. ") + kProductShortVersion).c_str(), kProductBuild, 64);
  std::string log = kHeaderRule;
  log += "\u2022 " + std::string(product) + " - " + kProductWebAddress + "\r";
  log += kHeaderRule;
  log += "\r" + GLS("\u2022 OS Info:") + "\r\t" + GLS("OS X version:") + " " + host.systemVersion;
  if (!host.systemBuild.empty()) log += " (Build " + host.systemBuild + ")";
  log += "\r\t" + GLS("MacAddress:") + " " + host.hardwareAddress;
  log += "\r\t" + GLS("Current User:") + " " + host.userName + " (" + host.fullName + ")" +
         WithNumbers(GLS(" - User id: %d - Group id: %d"), {host.uid, host.gid});
  log += "\r\t" + GLS("Effective User id:") +
         WithNumbers(GLS(" %d - Effective Group id: %d"), {host.euid, host.egid}) + "\r\r";
  log += kSessionRule + "\r";
  return log;
}

std::string LogFileName(PlistDate start, std::int64_t logFileFormat, const std::string& timeZone) {
  return StringWithFormat(start, "'MGLog_'yyyy'_'MM'_'dd'_'HH'_'mm'_'ss", "en_US_POSIX", timeZone) +
         (logFileFormat == 1 ? ".rtf" : ".txt");
}

RunLogText::RunLogText(const RunState& state, const PlistDict& document, const PlistDict& preferences,
                       FileSystem& fs, const LogHostInfo& host, const LogDateFormat& format, bool allSessions)
    : mState(state), mDocument(document), mPrefs(preferences), mFs(fs), mHost(host), mFormat(format),
      mAllSessions(allSessions) {}

std::string RunLogText::FormatDate(PlistDate date, const char* pattern) const {
  return StringWithFormat(date, pattern, mFormat.localeName, mFormat.timeZone);
}

std::string RunLogText::MakeLog() const {
  std::string log = MakeLogHeader();
  for (const PlistValue& value : mState.logSessionArray)
    if (const PlistDict* record = value.AsDict()) log += MakeLogSession(*record);
  return log;
}

std::string RunLogText::MakeLogHeader() const {
  const RunState& s = mState;
  std::string log = GetFixedLogHeader(mHost);
  log += "\u2022 " + GLS("Task") + ": ";
  if (const char* cause = ExecutedByText(s.mExecutedBy); *cause) log += GLS(cause);
  log += "\r\r";
  log += GLS("\u2022 Errors: ") + Num(s.gGlobalError) + "\r\r";
  if (s.mUserPressedStop) {
    log += GLS("\u2022 User Action: ") + GLS("user pressed the Stop button.") + "\r\r";
  } else if (s.gTerminateAfterSync) {
    log += GLS("\u2022 User Action: ") + GLS("user did quit the application during the task.") + "\r\r";
  }

  const char* kLongDate = "EEEE, MMMM dd, yyyy - HH:mm:ss";
  const double elapsed = std::max(0.0, s.gEndSyncDateTime.seconds - s.gStartSyncDateTime.seconds);
  char hms[64];
  std::snprintf(hms, sizeof hms, "%02.0f:%02.0f:%02.0f", std::floor(elapsed / 3600),
                std::floor(std::fmod(elapsed, 3600) / 60), std::floor(std::fmod(elapsed, 60)));
  log += GLS("\u2022 Timing: ") + "\r\t" + GLS("Start at:") + " " + FormatDate(s.gStartSyncDateTime, kLongDate) +
         "\r\t" + GLS("End at:") + "  " + FormatDate(s.gEndSyncDateTime, kLongDate) + "\r\t" +
         GLS("Elapsed Time (HMS): ") + hms + "\r";

  if (mAllSessions) {
    log += "\r" + GLS("\u2022 Sessions: ") + "(" + Num(static_cast<std::int64_t>(s.logSessionArray.size())) + ")\r";
    std::size_t ordinal = 0;
    for (const PlistValue& value : s.logSessionArray) {
      const PlistDict* record = value.AsDict();
      if (record == nullptr) continue;
      const std::int64_t index = record->GetInt("sessionIndex");
      log += "\t" + Num(static_cast<std::int64_t>(++ordinal)) + ": " + SessionName(GetSessionDict(mDocument, index), index) +
             " - " + GLS("Errors:") + " " + Num(record->GetInt("gTotError")) + "\r";
    }
  }

  const PlistDict& p = mPrefs;
  log += "\r" + GLS("\u2022 Preferences: ") + "\r\t" + GLS("\u2022 General: ") + "\r";
  const std::pair<const char*, const char*> general[] = {
      {kPrefSyncAndQuitTitle, "prefSyncAndQuit"}, {kPrefAskConfirmationTitle, "prefAskConfirmation"},
      {kPrefPreviewTitle, "prefPreview"},         {kPrefPreviewExpandedTitle, "prefPreviewExpanded"},
      {kPrefBeepWhenDoneTitle, "prefBeepWhenDone"}, {kPrefShutDownTitle, "prefShutDown"},
      {kPrefQuitTitle, "prefQuit"}};
  for (const auto& [title, key] : general) log += "\t\t" + GLS(title) + ": " + YesNo(p.IsFlagOn(key)) + "\r";
  log += "\t\t" + GLS(kPrefOnErrorLabel) + " " + Title(PrefOnErrorTitle(p.GetInt("prefOnError"))) + "\r";

  log += "\t" + GLS("\u2022 Log: ") + "\r";
  log += "\t\t" + GLS(kPrefSaveLogFileTitle) + ": " + YesNo(p.IsFlagOn("prefSaveLogFile"));
  if (p.IsFlagOn("prefSaveLogFile")) log += " (" + Title(PrefSaveWhenTitle(p.GetInt("prefSaveLogFileWhen"))) + ")";
  log += "\r\t\t" + GLS(kPrefLogFileFormatLabel) + " " + Title(PrefLogFileFormatTitle(p.GetInt("prefLogFileFormat")));
  log += "\r\t\t" + GLS(kPrefLogKindLabel) + " " + Title(PrefLogKindTitle(p.GetInt("prefLogKind")));
  log += "\r\t\t" + GLS(kPrefLogFolderLabel) + " " + p.GetString("prefPathLogFolder");
  log += "\r\t\t" + GLS(kPrefSendEmailTitle) + ": " + YesNo(p.IsFlagOn("prefSendEmail"));
  if (p.IsFlagOn("prefSendEmail")) log += " (" + Title(PrefSaveWhenTitle(p.GetInt("prefSendEmailWhen"))) + ")";
  const std::optional<PlistDict> account = ReadSendEmailDict(p);
  log += "\r\t\t" + GLS(kPrefEmailToLabel) + " " + (account ? account->GetString("mSendEmailTo") : "") + "\r";

  log += "\t" + GLS("\u2022 Copy Mode: ") + "\r";
  log += "\t\t" + GLS(kRunAsRootTitle) + ": " + YesNo(s.mEuidIsRoot) + "\r";
  log += "\t\t" + GLS(kPrefModificationDeltaTitle) + " " +
         (s.gModificationDelta < 1 ? GLS("No") : Num(s.gModificationDelta)) + "\r\r";
  return log;
}

std::string RunLogText::MakeLogSession(const PlistDict& sessionRecord) const {
  const std::int64_t index = sessionRecord.GetInt("sessionIndex");
  const PlistDict* sessionPtr = GetSessionDict(mDocument, index);
  static const PlistDict kNoSession;
  const PlistDict& session = sessionPtr ? *sessionPtr : kNoSession;
  const std::string name = SessionName(sessionPtr, index);
  const PlistArray* tasks = sessionRecord.GetArray("logTaskArray");
  std::int64_t total = 0;
  if (tasks != nullptr)
    for (const PlistValue& task : *tasks)
      if (const PlistDict* record = task.AsDict()) total += record->GetInt("gTotError");

  std::string log = kSessionRule + "\r" + GLS("\u2022 Session: ") + "\"" + name + "\" - " + GLS("Errors:") + " " +
                    Num(total) + "\r" + kSessionRule;
  if (const PlistDict* timers = session.GetDict("timerDict"))
    log += TimersLog(*timers, mFormat.localeName, mFormat.timeZone);

  const PlistDict* settings = session.GetDict("settingsDict");
  const bool sync = settings != nullptr && settings->GetInt("settTask") == 1;
  const std::string first = GLS(sync ? "1st" : "Source"), second = GLS(sync ? "2nd" : "Destination");
  const PlistDict* multi = session.GetDict("multiDict");
  if (multi != nullptr && multi->IsFlagOn("multiOn") && sessionRecord.Find("executiveMultiArray") && tasks) {
    log += GLS("\u2022 Multiple List: ") + "\r";
    std::size_t n = 0;
    for (const PlistValue& task : *tasks) {
      const PlistDict* record = task.AsDict();
      if (record == nullptr) continue;
      if (n > 0) log += "\r\t--\r";
      const std::string source = record->GetString("gSourceFolder"), dest = record->GetString("gDestFolder");
      log += "\t" + Num(static_cast<std::int64_t>(++n)) + ": " + GLS("Errors:") + " " + Num(record->GetInt("gTotError")) +
             "\r\t" + first + " " + ItemKindWord(source) + ": " + source + "\r\t" + second + " " + ItemKindWord(dest) +
             ": " + dest;
    }
    log += "\r";
  }
  if (const PlistArray* filters = sessionRecord.GetArray("executiveFilterArray"); filters && !filters->empty()) {
    log += GLS("\u2022 Filters: ") + "\r";
    for (std::size_t i = 0; i < filters->size(); ++i) {
      const PlistDict* row = (*filters)[i].AsDict();
      log += "\t" + Num(static_cast<std::int64_t>(i + 1)) + ": " + (row ? row->GetString("filterNameField") : "") + "\r";
    }
  }
  if (const PlistArray* excludes = sessionRecord.GetArray("executiveExcludeArray"); excludes && !excludes->empty()) {
    log += GLS("\u2022 Exclude: ") + "\r";
    for (std::size_t i = 0; i < excludes->size(); ++i) {
      const std::string* path = (*excludes)[i].AsString();
      log += "\t" + Num(static_cast<std::int64_t>(i + 1)) + ": " + (path ? *path : "") + "\r";
    }
  }
  if (settings != nullptr) log += GetLog(*settings);
  log += ConflictsPanel::GetLog(session);
  if (const PlistDict* scripts = session.GetDict("appleScriptDict");
      scripts && (scripts->IsFlagOn("asStartOn") || scripts->IsFlagOn("asEndOn"))) {
    log += "\r\r" + GLS("\u2022 AppleScript: ") + "\r\tBefore Session: " + FirstLine(scripts->GetString("asStartText")) +
           "\r\tAfter Session:    " + FirstLine(scripts->GetString("asEndText")) + "\r\r";
  }
  if (tasks != nullptr) {
    std::size_t number = 0;
    for (const PlistValue& task : *tasks)
      if (const PlistDict* record = task.AsDict()) log += MakeLogOneTask(*record, session, ++number, tasks->size());
  }
  return log;
}

std::string RunLogText::MakeLogOneTask(const PlistDict& record, const PlistDict& session, std::size_t number,
                                       std::size_t totMulti) const {
  const PlistDict* settings = session.GetDict("settingsDict");
  const bool sync = settings != nullptr && settings->GetInt("settTask") == 1;
  const std::string first = GLS(sync ? "1st" : "Source"), second = GLS(sync ? "2nd" : "Destination");
  const PlistDict* console = session.GetDict("consoleDict");
  const std::string name = console ? console->GetString("sessionName") : "";
  const std::string source = record.GetString("gSourceFolder"), dest = record.GetString("gDestFolder");

  std::string log = TaskRule() + "\u2022 " + GLS("Task") + " " + Num(static_cast<std::int64_t>(number)) + " " +
                    GLS("of") + " " + Num(static_cast<std::int64_t>(totMulti)) + " (" + GLS("Session") + ": \"" + name +
                    "\") - " + GLS("Errors:") + " " + Num(record.GetInt("gTotError")) + "\r" + TaskRule();
  auto rootLine = [&](const std::string& side, const std::string& path) {
    std::string line = side + " " + ItemKindWord(path) + ": \"" + path + "\"";
    if (IsOnRemoteVolume(path)) line += " " + GLS("(on Remote Volume)");
    return line;
  };
  log += rootLine(first, source) + "\r" + rootLine(second, dest) + "\r\r";
  if (mState.gMakeDetailedLog || mState.gMakeErrorsLog)
    log += GLS("Start") + "\r--\r" + record.GetString("gDetailedLogText") + "--\r" + GLS("End") + "\r\r";
  log += SideSummary(record, true, first);
  log += SideSummary(record, false, second);
  return log;
}

std::string RunLogText::SideSummary(const PlistDict& record, bool sideA, const std::string& sideName) const {
  const std::string prefix = sideA ? "gA" : "gB";
  auto count = [&](const char* field) { return record.GetInt(prefix + field); };
  const std::string path = record.GetString(sideA ? "gSourceFolder" : "gDestFolder");
  return "\u2022 " + GLS("Summary") + " " + sideName + " " + ItemKindWord(path) + ":\r\t" + path + "\r\t" +
         GLS("Folders Found: ") + Num(count("FoldersScanned")) + "\r\t" + GLS("Files Found: ") +
         Num(count("FilesScanned")) + "\r\t-\r\t" + GLS("Folders Created: ") + Num(count("FoldersCreated")) + "\r\t" +
         GLS("Files Replaced: ") + Num(count("FilesReplaced")) + "\r\t" + GLS("Files Copied (new additions): ") +
         Num(count("FilesCopied")) + "\r\t" + GLS("Total of items copied:") + " " + Num(count("ItemVisible")) + " " +
         GLS("visible") + " + " + Num(count("ItemInvisible")) + " " + GLS("invisible") + " = " +
         Num(count("ItemVisible") + count("ItemInvisible")) + "\r\t-\r\t" + GLS("Folders Deleted: ") +
         Num(count("FoldersDeleted")) + "\r\t" + GLS("Files Deleted: ") + Num(count("FilesDeleted")) + "\r\r";
}

std::string RunLogText::ItemKindWord(const std::string& path) const {
  const FsResult<ItemAttributes> attributes = mFs.GetAttributes(path);
  return GLS(attributes && attributes.Value().IsReallyFolder() ? "Folder" : "File");
}

bool RunLogText::IsOnRemoteVolume(const std::string& path) const {
  static const std::set<std::string> kRemoteTypes = {"nfs",  "nfs4",     "cifs",       "smb3",     "smbfs",
                                                     "9p",   "afs",      "ceph",       "glusterfs", "fuse.sshfs",
                                                     "sshfs", "davfs", "fuse.gvfsd-fuse", "fuse.rclone"};
  const FsResult<VolumeInfo> volume = mFs.GetVolume(path);
  return volume && kRemoteTypes.count(volume.Value().type) > 0;
}

}  // namespace marigold
