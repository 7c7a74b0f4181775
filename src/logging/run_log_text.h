// The run log's text: a fixed header (product, system, user), the run header (who started the
// run, errors, timing, sessions, preferences), then per session its options in words and per task
// its folders, its item-by-item text and the summary of both sides. Line breaks are "\r"; every
// label passes through GLS.
#pragma once

#include <cstdint>
#include <string>

#include "engine/run_state.h"
#include "platform/file_system.h"
#include "util/plist_value.h"

namespace marigold {

// Who and where the log was written: filled once by the program from the system.
struct LogHostInfo {
  std::string systemVersion;    // "Debian GNU/Linux 12 (bookworm)"
  std::string systemBuild;      // the kernel release; "" when unknown
  std::string hardwareAddress;  // of the default route's interface
  std::string userName;         // login name
  std::string fullName;
  long uid = 0, gid = 0, euid = 0, egid = 0;
};

// How dates are shown: the locale and time zone names ("" for the user's).
struct LogDateFormat {
  std::string localeName;
  std::string timeZone;
};

// The header rule, the product line with the web address, the system and user block, and the
// session rule.
std::string GetFixedLogHeader(const LogHostInfo& host);

// "MGLog_%Y_%m_%d_%H_%M_%S" of `start` in `timeZone`, with ".rtf" when `logFileFormat` is 1, else
// ".txt".
std::string LogFileName(PlistDate start, std::int64_t logFileFormat, const std::string& timeZone = "");

// Composes the log of one finished run from its state, the document it ran and the preferences.
class RunLogText {
 public:
  // `allSessions`: the run was started on the "All Sessions" entry. All references must outlive
  // this object; `fs` is asked whether the task roots are folders and on remote volumes.
  RunLogText(const RunState& state, const PlistDict& document, const PlistDict& preferences, FileSystem& fs,
             const LogHostInfo& host, const LogDateFormat& format, bool allSessions);

  // The whole log: MakeLogHeader, then MakeLogSession for each session record.
  std::string MakeLog() const;
  // The fixed header and the run header.
  std::string MakeLogHeader() const;
  // One session's block, followed by the blocks of its tasks.
  std::string MakeLogSession(const PlistDict& sessionRecord) const;
  // One task's block; `number` counts from 1 among the session's `totMulti` tasks.
  std::string MakeLogOneTask(const PlistDict& taskRecord, const PlistDict& session, std::size_t number,
                             std::size_t totMulti) const;

 private:
  std::string FormatDate(PlistDate date, const char* pattern) const;
  std::string SideSummary(const PlistDict& record, bool sideA, const std::string& sideName) const;
  // "Folder", or "File" for a file, a package or a missing item.
  std::string ItemKindWord(const std::string& path) const;
  bool IsOnRemoteVolume(const std::string& path) const;

  const RunState& mState;
  const PlistDict& mDocument;
  const PlistDict& mPrefs;
  FileSystem& mFs;
  const LogHostInfo& mHost;
  LogDateFormat mFormat;
  bool mAllSessions;
};

}  // namespace marigold
