#include "logging/log_files.h"

#include <algorithm>
#include <cerrno>
#include <vector>

#include "logging/product_identity.h"
#include "logging/rtf_text.h"
#include "util/path_join.h"
#include "util/strings_table.h"

namespace marigold {
namespace {

bool WriteAtomically(FileSystem& fs, const std::string& path, const std::string& bytes) {
  FsResult<std::unique_ptr<FileWriter>> writer = fs.StartFileWrite(path, std::nullopt);
  if (!writer) return false;
  return writer.Value()->Write(bytes) && writer.Value()->Commit();
}

double Seconds(const FileTime& time) { return static_cast<double>(time.seconds) + time.nanoseconds / 1e9; }

std::string Quoted(const std::string& path) { return "\"" + path + "\""; }

}  // namespace

bool SaveLogToRTFFile(FileSystem& fs, const std::string& path, const std::string& logString) {
  if (path.empty() || logString.empty()) return false;
  return WriteAtomically(fs, path, MakeRtfDocument(logString, kProductWebAddress, kMakerDomain));
}

bool SaveLogToTextFile(FileSystem& fs, const std::string& path, const std::string& logString) {
  std::string text = logString;
  std::replace(text.begin(), text.end(), '\r', '\n');
  return WriteAtomically(fs, path, text);
}

LogFiles::LogFiles(FileSystem& fs, PlistDict& prefs, std::string fallbackFolder)
    : mFs(fs), mPrefs(prefs), mFallbackFolder(std::move(fallbackFolder)) {}

LogFiles::FolderState LogFiles::PrepareFolder(const std::string& folder) {
  FsResult<ItemAttributes> attributes = mFs.GetAttributes(folder);
  if (attributes && attributes.Value().kind == ItemKind::kSymlink) {
    // A link to a folder is the folder the user chose.
    const FsResult<std::string> target = mFs.ResolvePath(folder);
    if (target) attributes = mFs.GetAttributes(target.Value());
  }
  if (attributes && attributes.Value().kind == ItemKind::kFolder) return FolderState::kReady;
  // Something else stands there: it goes to the trash, where the user can still find it.
  if (attributes && !mFs.MoveToTrash(folder)) return FolderState::kUndeletable;
  if (!mFs.CreateFolder(folder, 0755, true)) return FolderState::kCannotCreate;
  return FolderState::kReady;
}

std::optional<std::string> LogFiles::SaveLogFileToDisk(const std::string& logString, std::int64_t globalErrors,
                                                       const std::string& fileName, double now,
                                                       const std::function<void(const std::string&)>& reportError) {
  if (mPrefs.GetInt("prefSaveLogFile") == 0) return std::nullopt;
  if (mPrefs.GetInt("prefSaveLogFileWhen") == 2 && globalErrors == 0) return std::nullopt;
  std::string folder = mPrefs.GetString("prefPathLogFolder");
  if (folder.empty()) return std::nullopt;
  const auto undeletable = [&](const std::string& path) {
    reportError(GLS("Can't save the log file inside the log folder because the log folder") + " " + Quoted(path) + " " +
                GLS("really is undeletable file"));
  };
  FolderState state = PrepareFolder(folder);
  if (state == FolderState::kUndeletable) {
    undeletable(folder);
    return std::nullopt;
  }
  if (state == FolderState::kCannotCreate) {
    folder = mFallbackFolder;
    state = folder.empty() ? FolderState::kCannotCreate : PrepareFolder(folder);
    if (state == FolderState::kUndeletable) {
      undeletable(folder);
      return std::nullopt;
    }
    if (state == FolderState::kCannotCreate) {
      reportError(GLS("Can't save the log file because I can't create the folder") + " " + Quoted(folder));
      return std::nullopt;
    }
    mPrefs.Set("prefPathLogFolder", folder);
  }
  const std::string path = JoinPath(folder, fileName);
  const bool written = mPrefs.GetInt("prefLogFileFormat") == 1 ? SaveLogToRTFFile(mFs, path, logString)
                                                                : SaveLogToTextFile(mFs, path, logString);
  if (!written) {
    reportError(GLS("Can't save the log file") + " " + Quoted(path));
    return std::nullopt;
  }
  if (mPrefs.IsFlagOn("prefDeleteLogsOn")) RemoveLastLogFiles(now);
  return path;
}

void LogFiles::RemoveLastLogFiles(double now) {
  const std::string folder = mPrefs.GetString("prefPathLogFolder");
  const FsResult<std::vector<FolderEntry>> entries = folder.empty() ? FsResult<std::vector<FolderEntry>>(
                                                                          MakeFsError(ENOENT, "list folder", folder))
                                                                    : mFs.ListFolder(folder);
  if (!entries) return;
  const std::int64_t n = mPrefs.GetInt("prefDeleteLogsField");
  const std::int64_t mode = mPrefs.GetInt("prefDeleteLogsPop");
  std::vector<std::pair<double, std::string>> logs;
  for (const FolderEntry& entry : entries.Value()) {
    if (entry.name.rfind(kLogFilePrefix, 0) != 0) continue;
    const std::string path = JoinPath(folder, entry.name);
    const double date = Seconds(entry.attributes.modificationTime);
    if (mode == 0 && now - date > static_cast<double>(n) * 86400.0) {
      (void)mFs.RemoveItem(path);
    } else if (mode == 1) {
      logs.emplace_back(date, path);
    }
  }
  if (mode != 1 || n < 0 || logs.size() <= static_cast<std::size_t>(n)) return;
  std::sort(logs.begin(), logs.end());
  for (std::size_t i = 0; i < logs.size() - static_cast<std::size_t>(n); ++i) (void)mFs.RemoveItem(logs[i].second);
}

}  // namespace marigold
