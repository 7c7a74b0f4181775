#include "logging/log_window.h"

#include <cerrno>

#include "logging/rtf_text.h"
#include "util/quillon_additions.h"
#include "util/strings_table.h"

namespace marigold {
namespace {

// Logs are text; anything past this is not one of ours.
constexpr std::uint64_t kMaxLogBytes = 512ull * 1024 * 1024;

}  // namespace

std::optional<std::string> ReadLogFileText(FileSystem& fs, const std::string& path) {
  FsResult<FileBytes> bytes = fs.ReadFile(path, kMaxLogBytes);
  if (!bytes) return std::nullopt;
  const std::string_view view = bytes.Value().View();
  if (HasSuffixIgnoringCase(path, ".rtf")) return ReadRtfText(view);
  return std::string(view);
}

LogWindowContent FillLogWindow(FileSystem& fs, const std::string& path, const std::string& logString) {
  LogWindowContent content;
  // A link to a log is followed, as opening a file does.
  const FsResult<std::string> resolved = path.empty() ? FsResult<std::string>(MakeFsError(ENOENT, "open", path))
                                                      : fs.ResolvePath(path);
  const FsResult<ItemAttributes> attributes =
      resolved ? fs.GetAttributes(resolved.Value()) : FsResult<ItemAttributes>(resolved.Error());
  const bool isFile = attributes && attributes.Value().kind == ItemKind::kFile;
  if (isFile) {
    if (std::optional<std::string> text = ReadLogFileText(fs, path)) {
      content.source = LogWindowSource::kFile;
      content.title = path;
      content.text = std::move(*text);
    } else {
      content.source = LogWindowSource::kCannotOpen;
      content.alert = GLS("Can't open this Log file.");
    }
    return content;
  }
  if (logString.empty()) return content;
  content.source = LogWindowSource::kLastRunText;
  content.title = GLS("Log Window");
  content.text = logString;
  return content;
}

std::optional<std::size_t> LogFindError(std::string_view text, std::size_t selectionStart, std::size_t selectionLength,
                                        bool previous) {
  const std::size_t start = std::min(selectionStart, text.size());
  const std::size_t end = std::min(start + selectionLength, text.size());
  const std::size_t m = kLogErrorMarker.size();
  if (!previous) {
    std::size_t found = text.find(kLogErrorMarker, end);
    if (found != std::string_view::npos) return found;
    found = text.substr(0, start).find(kLogErrorMarker);
    if (found != std::string_view::npos) return found;
    return std::nullopt;
  }
  // Backwards from the selection's start, then backwards through the part after the selection.
  if (start >= m) {
    const std::size_t found = text.substr(0, start).rfind(kLogErrorMarker);
    if (found != std::string_view::npos) return found;
  }
  const std::size_t found = text.rfind(kLogErrorMarker);
  if (found != std::string_view::npos && found >= end) return found;
  return std::nullopt;
}

}  // namespace marigold
