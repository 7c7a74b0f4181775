// What the log window shows and how it steps between errors, without any widget: the desktop
// program's log window and `marigold log` both use this. Error lines begin with the marker "√ ".
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "platform/file_system.h"

namespace marigold {

// The marker every error line of a detailed or errors-only log begins with.
inline constexpr std::string_view kLogErrorMarker = "\u221A ";

enum class LogWindowSource {
  kFile,         // the file at the path was shown
  kLastRunText,  // no file there: the last run's log text was shown
  kNothing,      // no file and no log text: the window is left as it is
  kCannotOpen,   // a file is there but cannot be read: show `alert`
};

struct LogWindowContent {
  LogWindowSource source = LogWindowSource::kNothing;
  std::string title;  // the file's path, or the localised "Log Window"
  std::string text;   // line breaks as "\r" (as the run made them) or as the file holds them
  std::string alert;  // the localised "Can't open this Log file." when it cannot be opened
  bool ok() const { return source == LogWindowSource::kFile || source == LogWindowSource::kLastRunText; }
};

// Loads the log at `path` (a name ending in ".rtf" as RTF, any other as UTF-8 text); when no
// regular file is there, the last run's `logString` instead. Follows links. Any thread.
LogWindowContent FillLogWindow(FileSystem& fs, const std::string& path, const std::string& logString);

// The text of the log file at `path` (RTF read as text); nothing when it cannot be read.
std::optional<std::string> ReadLogFileText(FileSystem& fs, const std::string& path);

// Where the next (or, with `previous`, the previous) error marker starts, given the selection
// [selectionStart, selectionStart + selectionLength) in `text`, wrapping around the end; nothing
// when the text holds no marker. Offsets count bytes of the UTF-8 text; select
// kLogErrorMarker.size() bytes from the result.
std::optional<std::size_t> LogFindError(std::string_view text, std::size_t selectionStart, std::size_t selectionLength,
                                        bool previous);

}  // namespace marigold
