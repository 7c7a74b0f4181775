// Links followed inside a tree, and the items of a system volume that a run leaves alone.
#include <gtest/gtest.h>
#include <unistd.h>

#include "guard_harness.h"

namespace marigold::guard_test {
namespace {

bool Contains(const std::vector<std::string>& errors, const std::string& part) {
  for (const std::string& error : errors)
    if (error.find(part) != std::string::npos) return true;
  return false;
}

TEST(FollowedLinks, CopyTheirTargetsAndRefuseWhatCannotBeFollowed) {
  GuardRun run;
  run.Setting("settResolveSymLink", 1);
  trees::Build(run.temp.Join("elsewhere"), {{"note.txt", "target text"}, {"album/p1.jpg", "p1"}, {"other.txt", "o"}});
  const std::string elsewhere = run.temp.Join("elsewhere");
  trees::Build(run.A(), {{"plain.txt", "plain"}});
  ASSERT_EQ(::symlink((elsewhere + "/note.txt").c_str(), run.A("note.txt").c_str()), 0);
  ASSERT_EQ(::symlink((elsewhere + "/album").c_str(), run.A("album").c_str()), 0);
  ASSERT_EQ(::symlink((elsewhere + "/missing").c_str(), run.A("missing").c_str()), 0);
  ASSERT_EQ(::symlink((elsewhere + "/other.txt").c_str(), run.A("renamed.txt").c_str()), 0);
  ASSERT_EQ(::symlink("loop", run.A("loop").c_str()), 0);

  run.Run();

  // The targets arrive as a real file and a real folder; the refused links are not copied.
  EXPECT_EQ(trees::Read(run.B()),
            (trees::Tree{{"album/", ""}, {"album/p1.jpg", "p1"}, {"note.txt", "target text"}, {"plain.txt", "plain"}}));
  const auto& errors = run.Errors();
  EXPECT_EQ(errors.size(), 3u);
  EXPECT_TRUE(Contains(errors, "Can't resolve the SYM link \"" + run.A("missing") + "\""));
  EXPECT_TRUE(Contains(errors, "Can't resolve the SYM link \"" + run.A("loop") + "\""));
  EXPECT_TRUE(Contains(errors, "Cannot resolve the SymLink\r" + run.A("renamed.txt") +
                                   "\r\rbecause it points to a Target file\r" + elsewhere + "/other.txt"));
  EXPECT_TRUE(Contains(errors, "Please use SymLinks and Target files with equal names"));
  // The sources are untouched: links stay links.
  char target[256] = {};
  EXPECT_GT(::readlink(run.A("note.txt").c_str(), target, sizeof target - 1), 0);
  EXPECT_EQ(std::string(target), elsewhere + "/note.txt");
}

TEST(FollowedLinks, ReplaceTheTargetOnTheOtherSideToo) {
  GuardRun run;
  run.Setting("settResolveSymLink", 1);
  run.Setting("settTask", 1);
  trees::Build(run.temp.Join("store"), {{"doc.txt", "old"}});
  trees::Build(run.A(), {{"doc.txt", "new"}});
  trees::SetModified(run.A("doc.txt"), 1'700'000'000);
  trees::SetModified(run.temp.Join("store/doc.txt"), 1'600'000'000);
  ASSERT_EQ(::symlink(run.temp.Join("store/doc.txt").c_str(), run.B("doc.txt").c_str()), 0);

  run.Run();

  // Side B's link stands for the stored file, which now holds the newer text.
  EXPECT_EQ(run.Errors(), std::vector<std::string>{});
  char target[256] = {};
  EXPECT_GT(::readlink(run.B("doc.txt").c_str(), target, sizeof target - 1), 0);
  EXPECT_EQ(std::string(target), run.temp.Join("store/doc.txt"));
  EXPECT_EQ(run.temp.ReadFile("store/doc.txt"), "new");
}

TEST(SystemLists, NameEveryEntryAgainUnderAnotherVolume) {
  GuardCall call;
  call.volumes->mountPoints = {"/mnt/data"};
  call.state.gSourceFolder = "/mnt/data";
  call.state.gDestFolder = "/home/backup";
  call.guard.MakeItemsToDontCopyList(call.state);
  for (const char* item : {"/.Trashes", "/mnt/data/.Trashes", "/lost+found", "/mnt/data/lost+found"})
    EXPECT_TRUE(call.state.bootItemsToDontCopyArray.contains(item)) << item;
  for (const char* folder : {"/dev", "/mnt/data/dev", "/proc", "/mnt/data/proc", "/Volumes"})
    EXPECT_TRUE(call.state.bootFoldersToCopyEmptyArray.contains(folder)) << folder;
  // The destination is on the system's own volume: nothing more.
  EXPECT_FALSE(call.state.bootItemsToDontCopyArray.contains("/home/backup/.Trashes"));
  EXPECT_EQ(call.state.bootItemsToDontCopyArray.size(), 32u);
}

TEST(SystemLists, KeepTheirItemsOutOfARun) {
  GuardRun run;
  run.volumes->mountPoints = {run.A()};
  trees::Build(run.A(), {{"home/a.txt", "a"}, {"dev/null-ish", "x"}, {"proc/1/status", "s"}, {"lost+found/x", "x"},
                         {".Trashes/old", "o"}});
  ASSERT_EQ(::symlink("/", run.A(".fseventsd").c_str()), 0);

  run.Run();

  // Folders of the running system are made empty; the volume's own housekeeping stays behind.
  EXPECT_EQ(trees::Read(run.B()), (trees::Tree{{"dev/", ""}, {"home/", ""}, {"home/a.txt", "a"}, {"proc/", ""}}));
  EXPECT_EQ(run.Errors(), std::vector<std::string>{});
}

}  // namespace
}  // namespace marigold::guard_test
