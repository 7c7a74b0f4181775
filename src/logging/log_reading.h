// Reading saved logs back: the logs of a log folder, a log's error count, and its error lines
// with the task each belongs to. For `marigold log` and the desktop program's log list.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "platform/file_system.h"

namespace marigold {

struct LogFileEntry {
  std::string path;
  double modified = 0;  // seconds since 1970
};

// The "MGLog_" files of `folder`, newest first (by modification time, then name). Empty when the
// folder cannot be listed.
std::vector<LogFileEntry> ListLogFiles(FileSystem& fs, const std::string& folder);

// The run's error count from the log's "• Errors: " line; else the number of error lines.
std::int64_t LogErrorCount(const std::string& text);

// The error lines ("√ ..."), each group preceded by the heading of the task it belongs to, with
// "\n" line ends. "" when the log has no error line.
std::string LogErrorLines(const std::string& text);

}  // namespace marigold
