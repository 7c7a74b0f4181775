#include "logging/log_reading.h"

#include <algorithm>
#include <cstdlib>

#include "logging/log_files.h"
#include "logging/log_window.h"
#include "util/path_join.h"
#include "util/strings_table.h"

namespace marigold {
namespace {

// The log's lines, whether it breaks them with "\r" (as made) or "\n" (as saved as text).
std::vector<std::string> Lines(const std::string& text) {
  std::vector<std::string> lines;
  std::string line;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const char c = text[i];
    if (c == '\r' || c == '\n') {
      lines.push_back(line);
      line.clear();
      if (c == '\r' && i + 1 < text.size() && text[i + 1] == '\n') ++i;
    } else {
      line += c;
    }
  }
  if (!line.empty()) lines.push_back(line);
  return lines;
}

}  // namespace

std::vector<LogFileEntry> ListLogFiles(FileSystem& fs, const std::string& folder) {
  std::vector<LogFileEntry> logs;
  FsResult<std::vector<FolderEntry>> entries = fs.ListFolder(folder);
  if (!entries) return logs;
  for (const FolderEntry& entry : entries.Value()) {
    if (entry.name.rfind(kLogFilePrefix, 0) != 0 || entry.attributes.kind != ItemKind::kFile) continue;
    const FileTime& time = entry.attributes.modificationTime;
    logs.push_back({JoinPath(folder, entry.name), static_cast<double>(time.seconds) + time.nanoseconds / 1e9});
  }
  std::sort(logs.begin(), logs.end(), [](const LogFileEntry& a, const LogFileEntry& b) {
    return a.modified != b.modified ? a.modified > b.modified : a.path > b.path;
  });
  return logs;
}

std::int64_t LogErrorCount(const std::string& text) {
  const std::string label = GLS("\u2022 Errors: ");
  std::int64_t markers = 0;
  for (const std::string& line : Lines(text)) {
    if (line.rfind(label, 0) == 0) return std::strtoll(line.c_str() + label.size(), nullptr, 10);
    if (line.rfind(kLogErrorMarker, 0) == 0) ++markers;
  }
  return markers;
}

std::string LogErrorLines(const std::string& text) {
  const std::string taskHeading = "\u2022 " + GLS("Task") + " ";
  std::string heading, out;
  bool headingShown = false;
  for (const std::string& line : Lines(text)) {
    if (line.rfind(taskHeading, 0) == 0) {
      heading = line;
      headingShown = false;
    } else if (line.rfind(kLogErrorMarker, 0) == 0) {
      if (!headingShown && !heading.empty()) out += heading + "\n";
      headingShown = true;
      out += line + "\n";
    }
  }
  return out;
}

}  // namespace marigold
