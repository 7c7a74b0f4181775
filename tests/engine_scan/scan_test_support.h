// Real temporary trees stated as values with their dates, and a harness that scans two trees
// the way a run scans a task.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "engine/error_path.h"
#include "engine/scanner.h"
#include "platform/linux_file_system.h"
#include "support/fake_services.h"
#include "support/scripted_proxy.h"
#include "support/tree_values.h"

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
