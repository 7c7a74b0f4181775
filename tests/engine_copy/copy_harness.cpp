#include "copy_harness.h"

#include <stdlib.h>

#include <filesystem>

namespace marigold::test {

namespace {

// The trash caches HOME and XDG_DATA_HOME at its first use: they are set before main runs.
struct TestHome {
  TestHome() {
    char pattern[] = "/tmp/marigold-copy-home-XXXXXX";
    if (::mkdtemp(pattern) == nullptr) return;
    path = pattern;
    ::setenv("HOME", path.c_str(), 1);
    ::setenv("XDG_DATA_HOME", (path + "/.local/share").c_str(), 1);
  }
  ~TestHome() {
    std::error_code ignored;
    if (!path.empty()) std::filesystem::remove_all(path, ignored);
  }
  std::string path;
};

TestHome& Home() {
  static TestHome home;
  return home;
}

[[maybe_unused]] const bool kHomeIsSet = !Home().path.empty();

void ReplaceAll(std::string& text, const std::string& from, const std::string& to) {
  if (from.empty()) return;
  for (std::size_t at = text.find(from); at != std::string::npos; at = text.find(from, at + to.size()))
    text.replace(at, from.size(), to);
}

ItemSnapshot SnapshotOf(FileSystem& fs, const std::string& path) {
  auto attributes = fs.GetAttributes(path);
  return attributes ? ItemSnapshot::Of(attributes.Value()) : ItemSnapshot::Absent();
}

}  // namespace

std::string TrashFilesFolder() { return Home().path + "/.local/share/Trash/files"; }

ScanNode FileNode(std::string name, int mode) {
  ScanNode node;
  node.name = std::move(name);
  node.copyMode = mode;
  return node;
}

ScanNode FolderNode(std::string name, int mode, std::vector<ScanNode> items) {
  ScanNode node = FileNode(std::move(name), mode);
  node.hasSubItems = true;
  node.subItems = std::move(items);
  return node;
}

ScanNode WithDestName(ScanNode node, std::string destName) {
  node.destName = std::move(destName);
  return node;
}

void TakeSnapshots(std::vector<ScanNode>& nodes, const std::string& folderA, const std::string& folderB) {
  LinuxFileSystem fs;
  for (ScanNode& node : nodes) {
    const std::string a = ChildPath(folderA, node.name);
    const std::string b = ChildPath(folderB, node.DestName());
    node.snapshotA = SnapshotOf(fs, a);
    node.snapshotB = SnapshotOf(fs, b);
    TakeSnapshots(node.subItems, a, b);
  }
}

std::vector<ScanNode> CopyEverythingTree(const std::string& folderA) {
  LinuxFileSystem fs;
  std::vector<ScanNode> nodes;
  auto entries = fs.ListFolder(folderA);
  if (!entries) return nodes;
  for (const FolderEntry& entry : entries.Value()) {
    if (entry.attributes.IsReallyFolder())
      nodes.push_back(FolderNode(entry.name, kCopyModeCopyAToB, CopyEverythingTree(ChildPath(folderA, entry.name))));
    else
      nodes.push_back(FileNode(entry.name, kCopyModeCopyAToB));
    nodes.back().snapshotA = ItemSnapshot::Of(entry.attributes);
  }
  return nodes;
}

std::string Counters(const SideCopyCounters& c) {
  std::string text;
  auto add = [&text](const char* name, std::int64_t value) {
    if (value == 0) return;
    if (!text.empty()) text += ' ';
    text += std::string(name) + "=" + std::to_string(value);
  };
  add("FoldersCreated", c.FoldersCreated);
  add("FilesCopied", c.FilesCopied);
  add("FilesReplaced", c.FilesReplaced);
  add("FilesRenamed", c.FilesRenamed);
  add("FoldersDeleted", c.FoldersDeleted);
  add("FilesDeleted", c.FilesDeleted);
  add("FoldersTrashed", c.FoldersTrashed);
  add("FilesTrashed", c.FilesTrashed);
  add("ItemVisible", c.ItemVisible);
  add("ItemInvisible", c.ItemInvisible);
  return text;
}

CopyHarness::CopyHarness(const Tree& treeA, const Tree& treeB)
    : a(tmp.emplace().Join("A")), b(tmp->Join("B")) {
  trees::Build(a, treeA);
  trees::Build(b, treeB);
  Init();
}

CopyHarness::CopyHarness(const std::string& rootA, const std::string& rootB) : a(rootA), b(rootB) { Init(); }

void CopyHarness::Init() {
  // Unattended: every error is counted and the run goes on, as the tests expect.
  state.mExecutedBy = kExecutedByTimer;
  state.gMakeDetailedLog = true;
  state.gStartSyncDateTimeUTC = kRunStart;
  state.gSourceFolder = a;
  state.gDestFolder = b;
  state.mIsCopying = true;
  errors.SetErrorObserver([this](const std::string& message) { errorMessages.push_back(message); });
}

bool CopyHarness::Run(std::vector<ScanNode>& nodes, bool snapshot) {
  if (snapshot) TakeSnapshots(nodes, a, b);
  return executor.CopyItems(nodes, a, b, false);
}

std::string CopyHarness::Log() const {
  std::string text = state.gDetailedLogText;
  ReplaceAll(text, state.gSourceFolder, "{A}");
  ReplaceAll(text, state.gDestFolder, "{B}");
  return text;
}

std::vector<std::string> CopyHarness::Errors() const {
  std::vector<std::string> messages = errorMessages;
  for (std::string& message : messages) {
    ReplaceAll(message, state.gSourceFolder, "{A}");
    ReplaceAll(message, state.gDestFolder, "{B}");
  }
  return messages;
}

std::string CopyHarness::Path(const std::string& withPlaceholders) const {
  std::string path = withPlaceholders;
  ReplaceAll(path, "{A}", state.gSourceFolder);
  ReplaceAll(path, "{B}", state.gDestFolder);
  return path;
}

}  // namespace marigold::test
