// A session whose destination lies on a real sftp server, reached through GVfs: it mounts the
// server, backs up onto it and unmounts it; a wrong password or a server that is down is refused
// before anything is scanned.
#include <gtest/gtest.h>

#include "app/session_hooks.h"
#include "engine/folder_guard.h"
#include "session_hooks/sftp_server.h"
#include "support/run_harness.h"
#include "util/well_scramble.h"

namespace marigold::run_test {
namespace {

class ServerVolume : public ::testing::Test {
 protected:
  void SetUp() override {
    const std::string why = server.Start();
    if (!why.empty()) GTEST_SKIP() << why;
    trees::Build(h.A(), {{"notes.txt", "n"}, {"photos/a.jpg", "A"}});
    destination = server.fuseRoot() + server.remoteFolder();
    h.document = MakeDocument({{h.A(), destination, /*task=*/2}});
    h.services.hooks = &hooks;
    h.services.guard = &guard;
  }
  void AddServerRow(const std::string& password) {
    PlistDict& block = *h.document.GetArray("sessionsArray")->at(0).AsDict()->GetDict("autoMountDict");
    block.Set("autoMountVolumeOn", 1);
    PlistDict& row = *block.GetArray("autoMountVolumeArray")->at(0).AsDict();
    row.Set("onOff", 1);
    row.Set("volumeType", 1);
    row.Set("scheme", "sftp");
    row.Set("user", SftpServer::kUser);
    row.Set("password", SetWellData(password));
    row.Set("host", server.host());
    row.Set("path", server.remoteFolder());
    row.Set("mountPoint", server.fuseRoot());
    row.Set("unmountVolume", 1);
  }
  std::string Location() const {
    return "\"sftp://" + std::string(SftpServer::kUser) + "@" + server.host() + server.remoteFolder() + "\"";
  }
  void ExpectRefusedBeforeTheScan() {
    ASSERT_EQ(h.Errors().size(), 2u);
    EXPECT_EQ(h.Errors()[0].rfind("Can't mount the volumes:\r" + Location(), 0), 0u) << h.Errors()[0];
    EXPECT_EQ(h.Errors()[1], "Cannot find the destination folder:\r\"" + destination +
                                 "\"\rbecause I cannot mount the volume it resides on");
    EXPECT_TRUE(trees::Read(server.remoteFolder()).empty());
  }

  SftpServer server;
  RunHarness h;
  SessionVolumesAndScripts hooks;
  FolderGuard guard;
  std::string destination;
};

TEST_F(ServerVolume, TheSessionMountsTheServerBacksUpOntoItAndUnmountsIt) {
  AddServerRow(SftpServer::kPassword);
  h.Run(0, kExecutedByCommandLine);
  EXPECT_TRUE(h.Errors().empty()) << h.Errors().front();
  EXPECT_EQ(trees::Read(server.remoteFolder()), (trees::Tree{{"notes.txt", "n"}, {"photos/", ""}, {"photos/a.jpg", "A"}}));
  const std::string log = h.Task(0, 0).GetString("gDetailedLogText");
  EXPECT_NE(log.find("Mounted the volume\r" + Location()), std::string::npos) << log;
  EXPECT_NE(log.find("Unmounted the volume\r" + Location()), std::string::npos) << log;
  EXPECT_FALSE(SystemVolumeMounter().MountedRemotePath({"sftp", SftpServer::kUser, "", server.host(), "/"}))
      << "the server is still mounted";
}

TEST_F(ServerVolume, AWrongPasswordIsNotAuthorisedAndNothingIsScanned) {
  AddServerRow("not-the-password");
  h.Run(0, kExecutedByCommandLine);
  ExpectRefusedBeforeTheScan();
  if (!h.Errors().empty()) {
    EXPECT_NE(h.Errors()[0].find("Can't mount the volume. User or password not authorized."), std::string::npos);
  }
}

TEST_F(ServerVolume, AServerThatIsDownIsRefusedBeforeAnythingIsScanned) {
  AddServerRow(SftpServer::kPassword);
  server.StopServer();
  h.Run(0, kExecutedByCommandLine);
  ExpectRefusedBeforeTheScan();
}

}  // namespace
}  // namespace marigold::run_test
