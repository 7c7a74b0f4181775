// Whole runs with the session's real scripts and volumes: scripts before and after the session,
// a volume that cannot be mounted, and a disk image mounted and detached around the run (root).
#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

#include "app/session_hooks.h"
#include "engine/folder_guard.h"
#include "platform/mount_table.h"
#include "platform/process_runner.h"
#include "support/run_harness.h"

namespace marigold::run_test {
namespace {

bool Contains(const std::string& text, const std::string& part) { return text.find(part) != std::string::npos; }

class SessionRun : public ::testing::Test {
 protected:
  void SetUp() override {
    trees::Build(h.A(), {{"notes.txt", "n"}});
    ::mkdir(h.B().c_str(), 0755);
    h.document = MakeDocument({{h.A(), h.B(), /*task=*/2}});
    h.services.hooks = &hooks;
    h.services.guard = &guard;
  }
  PlistDict& Session() { return *h.document.GetArray("sessionsArray")->at(0).AsDict(); }
  void SetScripts(const std::string& before, const std::string& after) {
    PlistDict& scripts = *Session().GetDict("appleScriptDict");
    scripts.Set("asStartOn", before.empty() ? 0 : 1);
    scripts.Set("asStartText", before);
    scripts.Set("asEndOn", after.empty() ? 0 : 1);
    scripts.Set("asEndText", after);
  }
  void AddImageRow(const std::string& image, const std::string& mountPoint) {
    PlistDict& block = *Session().GetDict("autoMountDict");
    block.Set("autoMountVolumeOn", 1);
    PlistDict& row = *block.GetArray("autoMountVolumeArray")->at(0).AsDict();
    row.Set("onOff", 1);
    row.Set("volumeType", 3);
    row.Set("dmgPath", image);
    row.Set("mountPoint", mountPoint);
    row.Set("unmountVolume", 1);
  }
  std::string Log() { return h.Task(0, 0).GetString("gDetailedLogText"); }

  RunHarness h;
  SessionVolumesAndScripts hooks;
  FolderGuard guard;
};

TEST_F(SessionRun, TheBeforeScriptRunsAheadOfTheScanAndTheAfterScriptWhenTheSessionIsDone) {
  SetScripts("echo made > \"$MARIGOLD_SIDE_A/made.txt\"; echo before-said",
             "test -f \"$MARIGOLD_SIDE_B/made.txt\" && echo after-saw-the-copy");
  h.Run(0, kExecutedByCommandLine);
  EXPECT_EQ(trees::Read(h.B()), (trees::Tree{{"made.txt", "made\n"}, {"notes.txt", "n"}}));
  EXPECT_TRUE(Contains(Log(), "before-said\r")) << Log();
  EXPECT_TRUE(Contains(Log(), "after-saw-the-copy\r")) << Log();
  EXPECT_TRUE(h.Errors().empty());
}

TEST_F(SessionRun, ScriptErrorsAreRunErrorsAndTheRunGoesOn) {
  SetScripts("if", "echo 'disk full' >&2; exit 3");
  h.Run(0, kExecutedByCommandLine);
  EXPECT_EQ(trees::Read(h.B()), (trees::Tree{{"notes.txt", "n"}}));
  ASSERT_EQ(h.Errors().size(), 2u);
  EXPECT_EQ(h.Errors()[0].rfind("Error compiling the first AppleScript.\rError: 2.\r", 0), 0u) << h.Errors()[0];
  EXPECT_EQ(h.Errors()[1], "Error running the AppleScript after the session \"" +
                               Session().GetDict("consoleDict")->GetString("sessionName") +
                               "\".\rError: 3.\rdisk full");
  EXPECT_EQ(h.Task(0, 0).GetInt("gTotError"), 2);
  EXPECT_TRUE(Contains(Log(), "√ Error running the AppleScript after")) << Log();
}

// The image cannot be mounted, and its mount point is an empty folder: the task is refused as
// missing, and nothing is copied into the folder the volume should have covered.
TEST_F(SessionRun, AFolderOnAVolumeThatCouldNotBeMountedIsRefusedNotScanned) {
  AddImageRow(h.Path("missing.img"), h.B());
  h.Run(0, kExecutedByCommandLine);
  ASSERT_EQ(h.Errors().size(), 2u);
  EXPECT_EQ(h.Errors()[0].rfind("Can't mount the volumes:\r\"" + h.Path("missing.img") + "\"", 0), 0u);
  EXPECT_EQ(h.Errors()[1], "Cannot find the destination folder:\r\"" + h.B() +
                               "\"\rbecause I cannot mount the volume it resides on");
  EXPECT_TRUE(trees::Read(h.B()).empty());
}

bool Succeeds(std::vector<std::string> argv) {
  ProcessRequest request;
  request.argv = std::move(argv);
  return RunProcess(request).exitStatus == 0;
}

bool IsMountPoint(const std::string& path) {
  for (const MountEntry& entry : ReadMountTable()) {
    if (entry.mountPoint == path) return true;
  }
  return false;
}

TEST_F(SessionRun, ADiskImageIsMountedForTheRunAndDetachedAfterIt) {
  if (::geteuid() != 0) GTEST_SKIP() << "mounting a disk image here needs root";
  const std::string image = h.Path("backup.img");
  const std::string mountPoint = h.Path("mnt");
  ASSERT_TRUE(Succeeds({"truncate", "-s", "8M", image}));
  ASSERT_TRUE(Succeeds({"mkfs.ext4", "-q", "-F", image}));
  ::mkdir(mountPoint.c_str(), 0755);
  Session().GetDict("consoleDict")->Set("bottomFolder", mountPoint);
  AddImageRow(image, mountPoint);
  struct Unmounter {
    std::string path;
    ~Unmounter() {
      if (IsMountPoint(path)) Succeeds({"umount", path});
    }
  } unmounter{mountPoint};

  h.Run(0, kExecutedByCommandLine);
  EXPECT_TRUE(h.Errors().empty()) << h.Errors().front();
  EXPECT_FALSE(IsMountPoint(mountPoint));
  EXPECT_TRUE(Contains(Log(), "Mounted the volume\r\"" + image + "\"")) << Log();
  EXPECT_TRUE(Contains(Log(), "Unmounted the volume\r\"" + image + "\"")) << Log();
  ProcessRequest attached;
  attached.argv = {"losetup", "-j", image};
  EXPECT_EQ(RunProcess(attached).output, "") << "the loop device stayed attached";

  ASSERT_TRUE(Succeeds({"mount", "-o", "loop,ro", image, mountPoint}));
  EXPECT_EQ(h.temp.ReadFile(mountPoint + "/notes.txt"), "n");
}

}  // namespace
}  // namespace marigold::run_test
