// Real temporary trees stated as values with their dates, and a harness that scans two trees
// the way a run scans a task.
#pragma once

#include <cstdint>
#include <deque>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "engine/error_path.h"
#include "engine/scanner.h"
#include "platform/linux_file_system.h"
#include "support/fake_services.h"
#include "support/scripted_proxy.h"

namespace marigold::scantest {

inline constexpr std::int64_t T = 1'600'000'000;  // every item's date unless a test says otherwise

// One item of a stated tree. A path ending in "/" is a folder; `link` makes a symbolic link to
// `content`; `fifo` a named pipe.
struct TreeItem {
  std::string path;
  std::string content;
  std::optional<std::int64_t> mtime;
  std::optional<std::int64_t> backupDate;
  std::uint32_t nanoseconds = 0;
  bool link = false;
  bool fifo = false;
};
using TreeShape = std::vector<TreeItem>;

// A folder holding a stated tree, removed with everything in it.
class TempTree {
 public:
  explicit TempTree(const TreeShape& shape = {});
  ~TempTree();
  const std::string& Path() const { return mPath; }
  std::string operator/(const std::string& relative) const { return mPath + "/" + relative; }

 private:
  std::string mPath;
};

// Sets an item's modification time without following a link.
void SetTime(const std::string& path, std::int64_t seconds, std::uint32_t nanoseconds = 0);

// Forwards to the real file system, except that the folders listed say they ignore case and
// status-change times can be shifted per path.
class TweakedFileSystem : public FileSystem {
 public:
  std::set<std::string> caseInsensitiveFolders;
  std::map<std::string, std::int64_t> statusShift;  // full path -> seconds added to ctime
  std::map<std::string, std::int64_t> accessTime;   // full path -> atime seconds

  FsResult<ItemAttributes> GetAttributes(const std::string& path) override;
  FsResult<std::vector<FolderEntry>> ListFolder(const std::string& path) override;
  FsResult<bool> IsCaseInsensitive(const std::string& folder, bool mayCreateProbe) override;
  FsResult<std::string> ReadLink(const std::string& p) override { return mReal.ReadLink(p); }
  FsResult<std::string> ResolvePath(const std::string& p) override { return mReal.ResolvePath(p); }
  FsStatus CheckAccess(const std::string& p, int m) override { return mReal.CheckAccess(p, m); }
  std::optional<std::int64_t> GetBackupDate(const std::string& p) override { return mReal.GetBackupDate(p); }
  FsResult<MetadataExtras> GetMetadataExtras(const std::string& p) override { return mReal.GetMetadataExtras(p); }
  FsStatus CreateFolder(const std::string& p, std::uint32_t m, bool i) override { return mReal.CreateFolder(p, m, i); }
  FsStatus RemoveItem(const std::string& p) override { return mReal.RemoveItem(p); }
  FsStatus RemoveTree(const std::string& p) override { return mReal.RemoveTree(p); }
  FsStatus Rename(const std::string& f, const std::string& t, bool r) override { return mReal.Rename(f, t, r); }
  FsStatus SetTimes(const std::string& p, FileTime m, std::optional<FileTime> a) override { return mReal.SetTimes(p, m, a); }
  FsStatus SetMode(const std::string& p, std::uint32_t m) override { return mReal.SetMode(p, m); }
  FsStatus SetOwner(const std::string& p, std::int64_t u, std::int64_t g) override { return mReal.SetOwner(p, u, g); }
  FsStatus SetLocked(const std::string& p, bool l) override { return mReal.SetLocked(p, l); }
  FsStatus SetBackupDate(const std::string& p, std::int64_t s) override { return mReal.SetBackupDate(p, s); }
  FsResult<CopyReport> CopyItem(const std::string& s, const std::string& d, const CopyOptions& o) override {
    return mReal.CopyItem(s, d, o);
  }
  FsStatus CopyMetadata(const std::string& s, const std::string& d) override { return mReal.CopyMetadata(s, d); }
  FsStatus MoveToTrash(const std::string& p) override { return mReal.MoveToTrash(p); }
  FsResult<std::uint64_t> GetFreeSpace(const std::string& p) override { return mReal.GetFreeSpace(p); }
  FsResult<VolumeInfo> GetVolume(const std::string& p) override { return mReal.GetVolume(p); }
  FsResult<FileBytes> ReadFile(const std::string& p, std::uint64_t m) override { return mReal.ReadFile(p, m); }
  FsResult<std::unique_ptr<FileWriter>> StartFileWrite(const std::string& p, std::optional<std::uint32_t> m) override {
    return mReal.StartFileWrite(p, m);
  }

 private:
  void Tweak(const std::string& path, ItemAttributes& attributes) const;
  LinuxFileSystem mReal;
};

enum class TaskKind { kBackup, kExactBackup, kSync, kExactSync };

// One task scanned as a run scans it, with the rules of a new session.
struct ScanHarness {
  explicit ScanHarness(TaskKind kind = TaskKind::kSync, FileSystem* fileSystem = nullptr);
  // Scans a into b from a fresh root; the roots' backup dates are read as a run reads them.
  bool Scan(const std::string& a, const std::string& b);
  // Mode of every node by its path below the root (A's spelling), folders included.
  std::map<std::string, int> Modes() const;
  // The node at `relative`, or nullptr.
  const ScanNode* Node(const std::string& relative) const;

  RunState state;
  LinuxFileSystem realFs;
  FileSystem& fs;
  ScriptedProxy proxy;
  FakeServices services;
  PlistDict preferences;
  ErrorPath errors;
  EngineContext context;
  Scanner scanner;
  ScanNode root;
};

}  // namespace marigold::scantest
