// The writer's failures: each reports its message and leaves the index folder exactly as it was,
// previous index in force and no temporary file behind. Faults are injected into a real tree.
#include <gtest/gtest.h>
#include <fcntl.h>
#include <unistd.h>

#include <functional>

#include "index_test_support.h"
#include "support/fault_file_system.h"
#include "util/plist_io.h"

namespace marigold::index_test {
namespace {

const std::string kTailB = ".\rThe next Exact Sync on these two folders will not run as \"Exact Sync\"";

std::string ErrorLines(const PlistDict& record) {
  std::string lines;
  const std::string text = record.GetString("gDetailedLogText");
  for (std::size_t start = 0; start < text.size();) {
    std::size_t end = text.find('\r', start);
    if (end == std::string::npos) end = text.size();
    if (text.compare(start, 4, "\xE2\x88\x9A ") == 0) lines += text.substr(start, end - start) + "\n";
    start = end + 1;
  }
  return lines;
}

std::string MainIndexText(bool withList) {
  PlistDict main{{"fileVersion", 320}};
  if (withList) main.Set("indexFilesList", PlistArray());
  return ToXmlPlist(PlistValue(main));
}

enum Subject { kFolder, kMain, kPair };

TEST(ExactIndexWrite, EveryFailureReportsAndKeepsTheIndexFolderAsItWas) {
  const struct {
    const char* name;
    std::function<void(IndexHarness&)> before;  // what the index folder holds before the run
    FsOperation operation;
    Subject subject;
    int error;
    const char* head;
  } rows[] = {
      {"folder without main index cannot be removed",
       [](IndexHarness& h) { trees::Build(h.IndexFolder(), {{"stray.plist", "s"}}); },
       FsOperation::kRemoveTree, kFolder, EACCES, "Can't delete the ExactSyncIndex folder"},
      {"folder cannot be made", [](IndexHarness&) {}, FsOperation::kCreateFolder, kFolder, EACCES,
       "Can't create the ExactSync Index Folder"},
      {"disk full while the main index is made", [](IndexHarness&) {}, FsOperation::kWriteFile, kMain, ENOSPC,
       "Can't create the ExactSync MainIndex File"},
      {"main index without a list cannot be synced",
       [](IndexHarness& h) { trees::Build(h.IndexFolder(), {{"MG3ExactSyncMainIndex.plist", MainIndexText(false)}}); },
       FsOperation::kSyncFile, kMain, EIO, "Can't update the ExactSync MainIndex File"},
      {"new entry refused by the rename",
       [](IndexHarness& h) { trees::Build(h.IndexFolder(), {{"MG3ExactSyncMainIndex.plist", MainIndexText(true)}}); },
       FsOperation::kRename, kMain, EACCES, "Can't update the ExactSync MainIndex File"},
      {"disk full while the pair index is written", [](IndexHarness& h) { h.Run(); }, FsOperation::kWriteFile, kPair,
       ENOSPC, "Can't update the ExactSync Index File"},
      {"pair index cannot be synced", [](IndexHarness& h) { h.Run(); }, FsOperation::kSyncFile, kPair, EIO,
       "Can't update the ExactSync Index File"},
      {"pair index rename refused", [](IndexHarness& h) { h.Run(); }, FsOperation::kRename, kPair, EACCES,
       "Can't update the ExactSync Index File"},
      {"no temporary pair index can be made", [](IndexHarness& h) { h.Run(); }, FsOperation::kStartFileWrite, kPair,
       EROFS, "Can't update the ExactSync Index File"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    IndexHarness h;
    trees::Build(h.A(), {{"x.txt", "x"}});
    row.before(h);
    const trees::Tree before = trees::Read(h.IndexFolder());
    const std::string subject = row.subject == kFolder ? h.IndexFolder() : row.subject == kMain ? h.MainIndex() : h.PairIndex();
    FaultFileSystem fs(h.realFs, {FailCall(row.operation, subject, row.error)});
    trees::Build(h.A(), {{"y.txt", "y"}});
    h.Run(kExecutedByUser, &fs);

    EXPECT_EQ(ErrorLines(h.Task0()), "\xE2\x88\x9A " + std::string(row.head) + " \"" + subject + "\"\n");
    EXPECT_EQ(trees::Read(h.IndexFolder()), before) << "the old files are intact and no temporary is left";
    EXPECT_EQ(trees::Read(h.B()), (trees::Tree{{"x.txt", "x"}, {"y.txt", "y"}})) << "the copy itself went on";
  }
}

TEST(ExactIndexWrite, AFolderThatCannotBeMadeSaysNoIndexWillBeWritten) {
  IndexHarness h;
  trees::Build(h.A(), {{"x.txt", "x"}});
  ASSERT_EQ(::rmdir(h.temp.Join("support").c_str()), 0);
  h.preferences.Set("prefOnError", 3);
  h.Run();

  ASSERT_EQ(h.proxy.alerts.size(), 1u);
  EXPECT_EQ(h.proxy.alerts[0].text.rfind("Can't create the ExactSync Index Folder \"" + h.IndexFolder() +
                                             "\".\rThus can't write the ExactSyncIndex file for this synchronization" +
                                             kTailB,
                                         0),
            0u)
      << h.proxy.alerts[0].text;
  EXPECT_EQ(h.state().gGlobalError, 1);
}

TEST(ExactIndexWrite, EveryNameTakenAsksToEmptyTheFolder) {
  IndexHarness h;
  trees::Build(h.A(), {{"x.txt", "x"}});
  trees::Build(h.IndexFolder(), {});
  trees::Write(h.MainIndex(), MainIndexText(true));
  trees::Write(h.PairIndex(), "");
  for (int n = 1; n <= 10000; ++n) {
    const int fd = ::open(h.PairIndex("MG3ExactSyncIndex " + std::to_string(n) + ".plist").c_str(), O_CREAT | O_WRONLY, 0644);
    ASSERT_GE(fd, 0);
    ::close(fd);
  }
  h.Run(kExecutedByTimer);

  EXPECT_EQ(ErrorLines(h.Task0()),
            "\xE2\x88\x9A Can't find an unique name for the ExactSync Index File \"" + h.PairIndex() + "\"\n");
  EXPECT_EQ(h.state().mErrString, "Can't find an unique name for the ExactSync Index File \"" + h.PairIndex() + "\"" +
                                      kTailB + ".\rPlease empty the folder \"" + h.IndexFolder() + "\"");
}

}  // namespace
}  // namespace marigold::index_test
