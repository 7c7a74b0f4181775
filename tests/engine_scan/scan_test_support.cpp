#include "scan_test_support.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <functional>


namespace marigold::scantest {

TempTree::TempTree(const TreeShape& shape) {
  std::string pattern = "/tmp/mg-scan-XXXXXX";
  if (::mkdtemp(pattern.data()) == nullptr) std::abort();
  mPath = pattern;
  LinuxFileSystem fs;
  for (const TreeItem& item : shape) {
    const std::string full = *this / item.path;
    const std::string parent = full.substr(0, full.find_last_of('/', full.size() - 2));
    fs.CreateFolder(parent, 0755, true);
    if (item.path.ends_with("/")) {
      fs.CreateFolder(full, 0755, true);
    } else if (item.link) {
      if (::symlink(item.content.c_str(), full.c_str()) != 0) std::abort();
    } else if (item.fifo) {
      if (::mkfifo(full.c_str(), 0644) != 0) std::abort();
    } else {
      std::ofstream(full, std::ios::binary) << item.content;
    }
  }
  // Dates last, deepest first, so that writing into a folder does not move its date again.
  for (auto it = shape.rbegin(); it != shape.rend(); ++it) {
    const std::string full = *this / it->path;
    if (it->backupDate && !fs.SetBackupDate(full, *it->backupDate)) std::abort();
    if (!it->fifo) trees::SetModified(full, it->mtime.value_or(T), it->nanoseconds);
  }
}

TempTree::~TempTree() { LinuxFileSystem().RemoveTree(mPath); }

ScanHarness::ScanHarness(TaskKind kind, FileSystem* fileSystem)
    : fs(fileSystem ? *fileSystem : realFs),
      errors(state, proxy, preferences),
      context{state, fs, proxy, services, errors, preferences},
      scanner(context) {
  SessionSwitches& s = state.session;
  s.gIsSyncOn = kind == TaskKind::kSync || kind == TaskKind::kExactSync;
  s.gIsExactOn = kind == TaskKind::kExactBackup || kind == TaskKind::kExactSync;
  // A new session's rules.
  s.gIsInvisibleOn = true;
  s.gIsConflictBackupRadio = s.gIsConflictExactBackupRadio = s.gIsConflictSyncRadio = true;
  s.gIsConflictExactSyncRadio = s.gIsConflictFileFolderRadio = true;
  state.gCompareExactSyncAtIndex = kind == TaskKind::kExactSync;
  state.mExecutedBy = kExecutedByUser;
  preferences.Set("prefOnError", PlistValue(std::int64_t{2}));
}

bool ScanHarness::Scan(const std::string& a, const std::string& b) {
  state.mIsCopying = true;
  state.mainSourceFolderBackupDate = fs.GetBackupDate(a);
  state.mainDestFolderBackupDate = fs.GetBackupDate(b);
  return scanner.ScanSingleFolder(root, a, b, true);
}

std::map<std::string, int> ScanHarness::Modes() const {
  std::map<std::string, int> modes;
  std::function<void(const ScanNode&, const std::string&)> walk = [&](const ScanNode& node, const std::string& at) {
    for (const ScanNode& child : node.subItems) {
      const std::string path = at.empty() ? child.name : at + "/" + child.name;
      modes[path] = child.copyMode;
      walk(child, path);
    }
  };
  walk(root, "");
  return modes;
}

const ScanNode* ScanHarness::Node(const std::string& relative) const {
  const ScanNode* node = &root;
  std::size_t start = 0;
  while (node && start <= relative.size()) {
    const std::size_t slash = std::min(relative.find('/', start), relative.size());
    const std::string name = relative.substr(start, slash - start);
    const ScanNode* next = nullptr;
    for (const ScanNode& child : node->subItems)
      if (child.name == name) next = &child;
    node = next;
    start = slash + 1;
  }
  return node;
}

}  // namespace marigold::scantest
