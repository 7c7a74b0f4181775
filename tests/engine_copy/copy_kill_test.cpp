// A run killed at any instant: every destination file is the complete old or the complete new
// file, a new file is complete or absent with nothing left of it, whatever else is left carries
// the engine's temporary marker (a later scan passes it by), and a later run completes the work.
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <random>
#include <thread>

#include "copy_harness.h"
#include "engine/scanner.h"
#include "support/temp_folder.h"
#include "util/temporary_names.h"

namespace marigold::test {
namespace {

constexpr int kFiles = 30;
constexpr int kKills = 6;

std::string Name(int i) { return "file-" + std::to_string(i); }
std::string NewContent(int i) { return std::string(40000 + 97 * i, static_cast<char>('a' + i % 26)); }
std::string OldContent(int i) { return "old " + std::to_string(i) + std::string(1000 * (i % 7), '.'); }

// Every file of A replaces its older self in B; those of A's "new" folder are new to B.
std::vector<ScanNode> CopyEverything() {
  std::vector<ScanNode> nodes, added;
  for (int i = 0; i < kFiles; ++i) {
    nodes.push_back(FileNode(Name(i), kCopyModeReplaceAToB));
    added.push_back(FileNode(Name(i), kCopyModeCopyAToB));
  }
  nodes.push_back(FolderNode("new", kCopyModeNothing, std::move(added)));
  return nodes;
}

// Starts a child that copies the whole tree and exits with 0 when it counted no error.
pid_t StartCopy(const std::string& a, const std::string& b) {
  pid_t child = ::fork();
  if (child == 0) {
    CopyHarness h(a, b);
    std::vector<ScanNode> nodes = CopyEverything();
    h.Run(nodes);
    ::_exit(h.state.gTotError == 0 ? 0 : 1);
  }
  return child;
}

TEST(KilledRun, LeavesOldOrNewFilesAndOnlyMarkedTemporaries) {
  TempFolder tmp;
  const std::string a = tmp.Join("A"), b = tmp.Join("B");
  Tree newTree, oldTree;
  for (int i = 0; i < kFiles; ++i) {
    newTree[Name(i)] = NewContent(i);
    newTree["new/" + Name(i)] = NewContent(i);
    oldTree[Name(i)] = OldContent(i);
  }
  newTree["new/"] = oldTree["new/"] = kDir;
  trees::Build(a, newTree);
  // The old files are older than the new ones, so that a later scan replaces what is left.
  auto resetDestination = [&] {
    std::filesystem::remove_all(b);
    trees::Build(b, oldTree);
    for (int i = 0; i < kFiles; ++i) trees::SetModified(b + "/" + Name(i), 946'684'800);
  };

  resetDestination();
  const auto started = std::chrono::steady_clock::now();
  pid_t child = StartCopy(a, b);
  ASSERT_GT(child, 0);
  int status = 0;
  ::waitpid(child, &status, 0);
  const auto fullRun = std::chrono::steady_clock::now() - started;
  ASSERT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
  ASSERT_EQ(trees::Read(b), newTree);

  std::mt19937 random(std::random_device{}());
  std::uniform_int_distribution<std::int64_t> moment(
      0, std::chrono::duration_cast<std::chrono::microseconds>(fullRun).count());
  for (int kill = 0; kill < kKills; ++kill) {
    resetDestination();
    const auto delay = std::chrono::microseconds(moment(random));
    child = StartCopy(a, b);
    ASSERT_GT(child, 0);
    std::this_thread::sleep_for(delay);
    ::kill(child, SIGKILL);
    ::waitpid(child, &status, 0);

    int replaced = 0, added = 0;
    for (const auto& [path, content] : trees::Read(b)) {
      if (path == "new/") continue;
      if (path.starts_with("new/")) {
        // A new file appears whole under its name or not at all, with no temporary beside it.
        ASSERT_TRUE(path.starts_with("new/file-")) << "killed after " << delay.count() << " us: " << path;
        ASSERT_EQ(content, NewContent(std::stoi(path.substr(9)))) << "killed after " << delay.count() << " us: " << path;
        ++added;
        continue;
      }
      const std::string& name = path;
      if (IsTemporaryName(name)) continue;
      ASSERT_TRUE(name.starts_with("file-")) << "killed after " << delay.count() << " us: " << name;
      const int i = std::stoi(name.substr(5));
      ASSERT_TRUE(content == OldContent(i) || content == NewContent(i))
          << "killed after " << delay.count() << " us: " << name << " holds " << content.size() << " bytes";
      replaced += content == NewContent(i);
    }
    for (int i = 0; i < kFiles; ++i) ASSERT_TRUE(trees::Read(b).count(Name(i))) << Name(i) << " vanished";

    // The next run, scan and copy, passes the left-overs by and finishes the work.
    CopyHarness h(a, b);
    h.state.session.gIsExactOn = true;  // an exact backup lists, and would delete, what only B holds
    Scanner scanner(h.context);
    ScanNode root;
    ASSERT_TRUE(scanner.ScanSingleFolder(root, a, b, true));
    int toReplace = 0, toAdd = 0;
    for (const ScanNode& node : root.subItems) {
      EXPECT_FALSE(IsTemporaryName(node.name)) << node.name << " taken for a user item";
      toReplace += node.copyMode == kCopyModeReplaceAToB;
      for (const ScanNode& child : node.subItems) toAdd += child.copyMode == kCopyModeCopyAToB;
    }
    EXPECT_EQ(toReplace, kFiles - replaced);
    EXPECT_EQ(toAdd, kFiles - added);
    EXPECT_TRUE(h.Run(root.subItems, false));
    Tree after = trees::Read(b);
    std::erase_if(after, [](const auto& entry) { return IsTemporaryName(entry.first); });
    EXPECT_EQ(after, newTree);
  }
}

}  // namespace
}  // namespace marigold::test
