// Log files in the log folder: saving this run's log (plain UTF-8 text with the platform's line
// ends, or RTF) and pruning old logs by age or by count. Only names beginning with "MGLog_" are
// ever pruned; every other file of the folder stays.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include "platform/file_system.h"
#include "util/plist_value.h"

namespace marigold {

// Every log file's name begins with this; pruning relies on it.
inline constexpr const char* kLogFilePrefix = "MGLog_";

// Writes `logString` as an RTF document at `path`, atomically. False when the path or the text
// is empty or the write fails.
bool SaveLogToRTFFile(FileSystem& fs, const std::string& path, const std::string& logString);

// Writes `logString` as text with "\n" line ends, atomically.
bool SaveLogToTextFile(FileSystem& fs, const std::string& path, const std::string& logString);

class LogFiles {
 public:
  // `prefs` are read for the log settings and receive a new prefPathLogFolder when the fallback
  // folder is used; `fallbackFolder` is the default log folder. Both must outlive this object.
  LogFiles(FileSystem& fs, PlistDict& prefs, std::string fallbackFolder);

  // Saves the run's log as `fileName` in the log folder when the preferences ask for it (and,
  // with "only on errors", when `globalErrors` > 0), then prunes when asked. Returns the file's
  // path, or nothing when no file was written. Each failure is handed to `reportError` (already
  // worded); a file standing where the folder should be is moved to the trash, never deleted.
  std::optional<std::string> SaveLogFileToDisk(const std::string& logString, std::int64_t globalErrors,
                                               const std::string& fileName, double now,
                                               const std::function<void(const std::string&)>& reportError);

  // Prunes the log folder as the preferences say: logs older than N days (a log exactly N days
  // old stays), or all but the N newest. Failures are ignored.
  void RemoveLastLogFiles(double now);

 private:
  // Makes `folder` a folder; false (after reporting) when it cannot be.
  enum class FolderState { kReady, kUndeletable, kCannotCreate };
  FolderState PrepareFolder(const std::string& folder);

  FileSystem& mFs;
  PlistDict& mPrefs;
  std::string mFallbackFolder;
};

}  // namespace marigold
