// The writer's failures: each reports its message (log line, error count, prompt) and leaves the
// previous index usable. Mounting a small file system and locking a folder need root.
#include <gtest/gtest.h>
#include <fcntl.h>
#include <sys/mount.h>
#include <unistd.h>

#include <optional>

#include "index_test_support.h"
#include "util/plist_io.h"

namespace marigold::index_test {
namespace {

const std::string kTailB = ".\rThe next Exact Sync on these two folders will not run as \"Exact Sync\"";

// A tmpfs of `kib` KiB mounted over `path` for the life of the object.
class SmallVolume {
 public:
  SmallVolume(const std::string& path, int kib) : mPath(path) {
    mMounted = ::mount("tmpfs", path.c_str(), "tmpfs", 0, ("size=" + std::to_string(kib) + "k").c_str()) == 0;
  }
  ~SmallVolume() {
    if (mMounted) ::umount2(mPath.c_str(), MNT_DETACH);
  }
  bool mounted() const { return mMounted; }

 private:
  std::string mPath;
  bool mMounted = false;
};

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

TEST(ExactIndexWrite, AFullDiskKeepsThePreviousIndexInForce) {
  if (::geteuid() != 0) GTEST_SKIP() << "mounting needs root";
  IndexHarness h;
  SmallVolume volume(h.temp.Join("support"), 64);
  ASSERT_TRUE(volume.mounted());
  trees::Build(h.A(), {{"x.txt", "x"}});
  h.Run();
  ASSERT_EQ(h.Task0().GetInt("gTotError"), 0);

  // Enough long names that the new index cannot fit.
  trees::Tree many;
  for (int i = 0; i < 1500; ++i) many["a-rather-long-file-name-to-fill-the-small-volume-" + std::to_string(i)] = "";
  trees::Build(h.A(), many);
  h.preferences.Set("prefOnError", 3);
  h.proxy.alertAnswers = {0};  // Continue
  h.Run();

  EXPECT_EQ(h.Task0().GetInt("gTotError"), 1);
  EXPECT_EQ(ErrorLines(h.Task0()), "\xE2\x88\x9A Can't update the ExactSync Index File \"" + h.PairIndex() + "\"\n");
  ASSERT_EQ(h.proxy.alerts.size(), 1u);
  EXPECT_EQ(h.proxy.alerts[0].text.rfind("Can't update the ExactSync Index File \"" + h.PairIndex() + "\"" + kTailB, 0), 0u)
      << h.proxy.alerts[0].text;
  EXPECT_EQ(trees::Read(h.IndexFolder()).size(), 2u) << "no temporary file is left behind";

  // The old index still says x.txt was on both sides: its deletion from B is carried to A.
  for (const auto& [name, content] : many) {
    ::unlink(h.A(name).c_str());
    ::unlink(h.B(name).c_str());
  }
  ASSERT_EQ(::unlink(h.B("x.txt").c_str()), 0);
  // A side left empty would look unmounted; a file on both sides keeps the run from asking.
  trees::Build(h.A(), {{"stay.txt", "s"}});
  trees::Build(h.B(), {{"stay.txt", "s"}});
  h.Run();
  EXPECT_EQ(trees::Read(h.A()), (trees::Tree{{"stay.txt", "s"}}));
}

TEST(ExactIndexWrite, ALockedIndexFolderKeepsThePreviousIndex) {
  if (::geteuid() != 0) GTEST_SKIP() << "locking needs root";
  IndexHarness h;
  trees::Build(h.A(), {{"x.txt", "x"}});
  h.Run();
  const std::string before = h.temp.ReadFile(h.PairIndex());
  if (!h.realFs.SetLocked(h.IndexFolder(), true)) GTEST_SKIP() << "this file system has no immutable flag";

  trees::Build(h.A(), {{"y.txt", "y"}});
  h.Run();
  h.realFs.SetLocked(h.IndexFolder(), false);

  EXPECT_EQ(ErrorLines(h.Task0()), "\xE2\x88\x9A Can't update the ExactSync Index File \"" + h.PairIndex() + "\"\n");
  EXPECT_EQ(h.temp.ReadFile(h.PairIndex()), before);
  EXPECT_EQ(trees::Read(h.B()), (trees::Tree{{"x.txt", "x"}, {"y.txt", "y"}})) << "the copy itself went on";
}

TEST(ExactIndexWrite, AMissingSupportFolderCannotHoldTheIndexFolder) {
  IndexHarness h;
  trees::Build(h.A(), {{"x.txt", "x"}});
  ASSERT_EQ(::rmdir(h.temp.Join("support").c_str()), 0);
  h.preferences.Set("prefOnError", 3);
  h.Run();

  EXPECT_EQ(ErrorLines(h.Task0()), "\xE2\x88\x9A Can't create the ExactSync Index Folder \"" + h.IndexFolder() + "\"\n");
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
  // Ten thousand files are made in a moment in memory; on the disk they may take seconds.
  std::optional<SmallVolume> volume;
  if (::geteuid() == 0) volume.emplace(h.temp.Join("support"), 16384);
  trees::Build(h.A(), {{"x.txt", "x"}});
  trees::Build(h.IndexFolder(), {});
  trees::Write(h.MainIndex(), ToXmlPlist(PlistValue(PlistDict{{"fileVersion", 320}, {"indexFilesList", PlistArray()}})));
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
