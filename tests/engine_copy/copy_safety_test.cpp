// What a replace promises: the destination path holds the old or the new complete file, a full
// disk or a failing write leaves the old file and no temporary, a source that changes while it
// is read is not copied, and a stop leaves nothing half-done.
#include <gtest/gtest.h>
#include <sys/mount.h>
#include <sys/stat.h>

#include <cstdlib>
#include <filesystem>

#include "copy_harness.h"

namespace marigold::test {
namespace {

// A tmpfs of `size` mounted for one test; Path() is empty when it could not be mounted.
class SmallVolume {
 public:
  explicit SmallVolume(const std::string& folder, const char* size) : mFolder(folder) {
    std::filesystem::create_directories(folder);
    if (::mount("tmpfs", folder.c_str(), "tmpfs", 0, (std::string("size=") + size).c_str()) == 0) mMounted = true;
  }
  ~SmallVolume() {
    if (mMounted) ::umount2(mFolder.c_str(), MNT_DETACH);
  }
  bool Mounted() const { return mMounted; }

 private:
  std::string mFolder;
  bool mMounted = false;
};

TEST(ExecutorReplace, RenamesACompleteCopyOverTheOldFile) {
  const std::string content(300000, 'n');
  CopyHarness h({{"doc", content}}, {{"doc", "old"}});
  const std::string &a = h.a, &b = h.b;
  const ino_t before = InodeOf(b + "/doc");
  std::vector<ScanNode> nodes = {FileNode("doc", kCopyModeReplaceAToB)};

  ASSERT_TRUE(h.Run(nodes));

  EXPECT_NE(InodeOf(b + "/doc"), before);
  EXPECT_EQ(trees::Read(b), (Tree{{"doc", content}}));
  EXPECT_EQ(MTimeNs(b + "/doc"), MTimeNs(a + "/doc"));
  EXPECT_GT(h.proxy.bytesUpdates, 0);
  EXPECT_EQ(h.proxy.lastBytesTotal, content.size());
}

TEST(ExecutorReplace, FullDiskIsRefusedBeforeAnythingIsWritten) {
  const std::string content(3 << 20, 'n');
  CopyHarness h({{"doc", content}}, {});
  const std::string &a = h.a, &b = h.b;
  SmallVolume volume(b, "2m");
  if (!volume.Mounted()) GTEST_SKIP() << "cannot mount a tmpfs here";
  trees::Write(b + "/doc", "old");
  LinuxFileSystem& real = h.real;
  const std::uint64_t free = real.GetFreeSpace(b).Value();
  struct stat source {};
  ASSERT_EQ(::stat((a + "/doc").c_str(), &source), 0);
  const std::uint64_t needed = std::min<std::uint64_t>(content.size(), std::uint64_t(source.st_blocks) * 512);
  std::vector<ScanNode> nodes = {FileNode("doc", kCopyModeReplaceAToB)};

  EXPECT_FALSE(h.Run(nodes));

  EXPECT_EQ(h.Errors(), (std::vector<std::string>{
                            "Can't replace the file \"{B}/doc\"\rError: Not enough space on the destination disk.\r"
                            "Free Memory: " + std::to_string(free) + " bytes\rMemory Required: " +
                            std::to_string(needed) + " bytes"}));
  EXPECT_EQ(trees::Read(b), (Tree{{"doc", "old"}}));
  EXPECT_EQ(real.GetFreeSpace(b).Value(), free);
  EXPECT_EQ(h.proxy.bytesUpdates, 0);
}

// The disk fills after 4 KiB of the copy: the old file survives and no temporary remains.
TEST(ExecutorReplace, FailingWriteKeepsTheOldFile) {
  CopyHarness h({{"doc", std::string(100000, 'n')}, {"next", "n"}}, {{"doc", "old"}});
  const std::string &b = h.b;
  h.fs.AddRule(FailCopyAfter(4096, ENOSPC));
  std::vector<ScanNode> nodes = {FileNode("doc", kCopyModeReplaceAToB), FileNode("next", kCopyModeCopyAToB)};

  EXPECT_FALSE(h.Run(nodes));

  EXPECT_EQ(h.Errors(), (std::vector<std::string>{"Can't replace the file \"{B}/doc\"\rwith the most recent file: "
                                                  "\"{A}/doc\"\rError: No space left on device"}));
  EXPECT_EQ(trees::Read(b), (Tree{{"doc", "old"}, {"next", "n"}}));
  EXPECT_EQ(Counters(h.state.gB), "FilesCopied=1 ItemVisible=1");
}

TEST(ExecutorCopy, FailingCopyLeavesNothing) {
  CopyHarness h({{"doc", std::string(50000, 'n')}}, {});
  const std::string &b = h.b;
  h.fs.AddRule(FailCopyAfter(8192, EIO));
  std::vector<ScanNode> nodes = {FileNode("doc", kCopyModeCopyAToB)};

  EXPECT_FALSE(h.Run(nodes));

  EXPECT_EQ(h.Errors(), (std::vector<std::string>{
                            "Can't copy the file \"{A}/doc\"\rto: \"{B}/doc\"\rError: Input/output error"}));
  EXPECT_EQ(trees::Read(b), Tree{});
  EXPECT_EQ(h.state.gAtLeastOneItemDone, false);
}

TEST(ExecutorCopy, SourceChangingWhileReadIsAnError) {
  CopyHarness h({{"log", std::string(1 << 20, 'l')}}, {{"log", "old"}});
  const std::string &a = h.a, &b = h.b;
  h.proxy.onBytes = [&] { trees::Write(a + "/log", std::string(1 << 20, 'l') + "one more line"); };
  std::vector<ScanNode> nodes = {FileNode("log", kCopyModeReplaceAToB)};

  EXPECT_FALSE(h.Run(nodes));

  EXPECT_EQ(h.Errors(), (std::vector<std::string>{
                            "Can't replace the file \"{B}/log\"\rwith the most recent file: \"{A}/log\"\r"
                            "Error: The source item changed while it was being copied."}));
  EXPECT_EQ(trees::Read(b), (Tree{{"log", "old"}}));
}

TEST(ExecutorStop, StopDuringACopyLeavesNothingAndReportsNothing) {
  CopyHarness h({{"big", std::string(1 << 20, 'b')}, {"later", "l"}}, {});
  const std::string &b = h.b;
  h.proxy.onBytes = [&] { h.state.mIsCopying = false; };
  std::vector<ScanNode> nodes = {FileNode("big", kCopyModeCopyAToB), FileNode("later", kCopyModeCopyAToB)};

  EXPECT_FALSE(h.Run(nodes));

  EXPECT_EQ(trees::Read(b), Tree{});
  EXPECT_TRUE(h.Errors().empty());
  EXPECT_EQ(Counters(h.state.gB), "");
}

TEST(ExecutorStop, StoppedRunDoesNotDeleteAFolderItDidNotEmpty) {
  CopyHarness h({}, {{"d/", kDir}, {"d/x", "x"}, {"d/y", "y"}});
  const std::string &b = h.b;
  h.fs.AddRule(RunBefore(FsOperation::kRemoveItem, b + "/d/x", [&] { h.state.mIsCopying = false; }));
  h.state.session.gIsMoveToTrash = false;
  std::vector<ScanNode> nodes = {
      FolderNode("d", kCopyModeDeleteInB, {FileNode("x", kCopyModeDeleteInB), FileNode("y", kCopyModeDeleteInB)})};

  h.Run(nodes);

  EXPECT_EQ(trees::Read(b), (Tree{{"d/", kDir}, {"d/y", "y"}}));
  EXPECT_TRUE(h.Errors().empty());
}

// A case-only rename goes through a temporary name; if the second step fails, the item gets its
// old name back.
TEST(ExecutorMetadata, FailedRenamePutsTheOldNameBack) {
  CopyHarness h({{"Read Me", "same"}}, {{"read me", "same"}});
  const std::string &b = h.b;
  h.fs.AddRule(FailCall(FsOperation::kRename, b + "/Read Me", EIO));
  std::vector<ScanNode> nodes = {WithDestName(FileNode("Read Me", kCopyModeMetadataAToB), "read me")};

  EXPECT_FALSE(h.Run(nodes));

  EXPECT_EQ(h.Errors(), (std::vector<std::string>{
                            "Can't rename the destination item \"{B}/read me\" to the new name \"Read Me\""}));
  EXPECT_EQ(trees::Read(b), (Tree{{"read me", "same"}}));
}

}  // namespace
}  // namespace marigold::test
