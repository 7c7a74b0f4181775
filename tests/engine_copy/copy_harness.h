// An executor on real temporary trees, with a proxy that records what a person would have seen,
// scan nodes built by hand, and snapshots taken from the disk as the scan takes them.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "engine/copy_executor.h"
#include "engine/copy_mode.h"
#include "engine/error_path.h"
#include "platform/fault_file_system.h"
#include "platform/linux_file_system.h"
#include "support/temp_folder.h"
#include "test_trees.h"

namespace marigold::test {

class RecordingProxy : public AppkitProxy {
 public:
  int Alert(const AlertRequest& request) override {
    alerts.push_back(request);
    return 0;
  }
  int AskReplace(const ReplaceRequest&) override { return kReplaceResultSkip; }
  bool ShowPreview(PreviewEditor&) override { return true; }
  void UpdateBytesCopied(std::uint64_t, std::uint64_t total) override {
    ++bytesUpdates;
    lastBytesTotal = total;
    if (onBytes) onBytes();
  }

  std::vector<AlertRequest> alerts;
  int bytesUpdates = 0;
  std::uint64_t lastBytesTotal = 0;
  std::function<void()> onBytes;  // runs while a file is being copied
};

// A leaf node (a file, link or package).
ScanNode FileNode(std::string name, int mode);
// A walked folder node with its items.
ScanNode FolderNode(std::string name, int mode, std::vector<ScanNode> items = {});
// The node with side B's spelling of its name.
ScanNode WithDestName(ScanNode node, std::string destName);

// Fills every node's snapshots from what is on disk now, as the scan would have.
void TakeSnapshots(std::vector<ScanNode>& nodes, const std::string& folderA, const std::string& folderB);
// The tree of a first backup of everything in `folderA` (folders walked, packages as one item).
std::vector<ScanNode> CopyEverythingTree(const std::string& folderA);

// The non-zero counters, "FilesCopied=2 ItemVisible=2", so a failed comparison reads well.
std::string Counters(const SideCopyCounters& counters);

struct CopyHarness {
  // A task whose roots `a` and `b` are made in a temporary folder of its own and hold `treeA`
  // and `treeB`.
  CopyHarness(const Tree& treeA, const Tree& treeB);
  // A task whose roots are `rootA` and `rootB`, made by the test.
  CopyHarness(const std::string& rootA, const std::string& rootB);

  // Performs `nodes`, the items of the roots; takes the snapshots first unless `snapshot` is
  // false (the test took them and changed the disk since).
  bool Run(std::vector<ScanNode>& nodes, bool snapshot = true);
  // The detailed log and the error messages with the roots written "{A}" and "{B}".
  std::string Log() const;
  std::vector<std::string> Errors() const;
  // "{A}/x" and "{B}/y" written out with the roots.
  std::string Path(const std::string& withPlaceholders) const;

  std::optional<TempFolder> tmp;  // only when the harness made the roots
  std::string a, b;
  LinuxFileSystem real;
  FaultFileSystem fs{real};  // the executor's file system: the real one until a test adds rules
  RecordingProxy proxy;
  PlistDict preferences;
  RunState state;
  ErrorPath errors{state, proxy, preferences};
  RunServices services;
  EngineContext context{state, fs, proxy, services, errors, preferences};
  CopyExecutor executor{context};
  std::vector<std::string> errorMessages;

 private:
  void Init();
};

inline constexpr std::int64_t kRunStart = 1'700'000'000;

// Where trashed items go: a home of the test program's own, set before anything reads HOME, so
// that nothing lands in the real user's trash. "<test home>/.local/share/Trash/files".
std::string TrashFilesFolder();

}  // namespace marigold::test
