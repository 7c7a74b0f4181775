// The rules of a session's volume rows: the messages of mount results, how GIO's failures map to
// them, which rows a run mounts, one row per volume, and folders on a volume that is not there.
#include <gtest/gtest.h>

#include <gio/gio.h>

#include "model/document_model.h"
#include "options/auto_mount_volumes.h"
#include "platform/gio_remote_volumes.h"
#include "util/well_scramble.h"

namespace marigold {
namespace {

TEST(VolumeRules, GioFailuresBecomeTheMessagesOfTheTryButtons) {
  struct Case {
    int gioCode;
    bool passwordRefused;
    const char* message;
  };
  const Case cases[] = {
      {G_IO_ERROR_FAILED_HANDLED, true, "Can't mount the volume. User or password not authorized."},
      {G_IO_ERROR_PERMISSION_DENIED, false, "Can't mount the volume. User or password not authorized."},
      {G_IO_ERROR_ALREADY_MOUNTED, false, "The volume is already mounted."},
      {G_IO_ERROR_HOST_NOT_FOUND, false, "Can't mount the volume. Unable to lookup the host address."},
      {G_IO_ERROR_CONNECTION_REFUSED, false, "Can't mount the volume. No servers at that address."},
      {G_IO_ERROR_HOST_UNREACHABLE, false, "Can't mount the volume. Unable to ping the host."},
      {G_IO_ERROR_TIMED_OUT, false, "Can't mount the volume. No answer from the host."},
      {G_IO_ERROR_NOT_SUPPORTED, false, "Can't mount the volume. URL not valid."},
      {G_IO_ERROR_INVALID_ARGUMENT, false, "Can't mount the volume. Parameter error."},
      {G_IO_ERROR_CANCELLED, false, ""},
      {G_IO_ERROR_FAILED, false, "Can't mount the volume. Err -36."},
  };
  for (const Case& c : cases)
    EXPECT_EQ(MountResultMessage(MountCodeForGioError(c.gioCode, c.passwordRefused)), c.message) << c.gioCode;
  EXPECT_EQ(MountResultMessage(kMountImageFailed), "Can't mount the dmg volume.");
  EXPECT_EQ(MountResultMessage(0), "");
}

PlistDict Row(int onOff, int type, const char* scheme, const char* user, const char* host) {
  PlistDict row = DefaultVolumeRow();
  row.Set("onOff", onOff);
  row.Set("volumeType", type);
  row.Set("scheme", scheme);
  row.Set("user", user);
  row.Set("host", host);
  return row;
}

TEST(VolumeRules, ARunMountsOnlyUsableRowsOfASessionWithAutoMountOn) {
  PlistDict rows[] = {
      Row(1, kVolumeRemote, "sftp", "kim", "nas"),  // the one server row that is complete
      Row(0, kVolumeRemote, "sftp", "kim", "nas"),  // off
      Row(1, kVolumeNone, "sftp", "kim", "nas"),    // no type
      Row(1, kVolumeRemote, "", "kim", "nas"),      // no scheme
      Row(1, kVolumeRemote, "smb", "", "nas"),      // no user
      Row(1, kVolumeDiskImage, "", "", ""),         // an image row is reported when its image is missing
  };
  rows[0].Set("password", SetWellData("secret"));
  PlistDict block{{"autoMountVolumeOn", 1}, {"autoMountVolumeArray", PlistArray(std::begin(rows), std::end(rows))}};
  PlistDict session{{"autoMountDict", block}};
  const std::vector<VolumeRow> active = ExecutiveVolumeRows(session);
  ASSERT_EQ(active.size(), 2u);
  EXPECT_EQ(active[0].password, "secret");
  EXPECT_EQ(VolumeRowText(active[0]), "sftp://kim@nas");
  EXPECT_EQ(active[1].volumeType, kVolumeDiskImage);

  session.GetDict("autoMountDict")->Set("autoMountVolumeOn", 0);
  EXPECT_TRUE(ExecutiveVolumeRows(session).empty());
}

TEST(VolumeRules, AMountedVolumeIsAddedOnceIntoTheFirstFreeRow) {
  PlistDict block{{"autoMountVolumeArray", PlistArray(3, PlistValue(DefaultVolumeRow()))}};
  block.GetArray("autoMountVolumeArray")->at(0) = PlistValue(Row(1, kVolumeRemote, "smb", "ann", "files"));
  const VolumeMountInfo nas{"sftp", "kim", "nas:2222", "/backup", "/run/user/0/gvfs/sftp:host=nas", "", kVolumeRemote};

  EXPECT_TRUE(AddToAutoMountVolumeArray(block, nas));
  const PlistDict& added = *block.GetArray("autoMountVolumeArray")->at(1).AsDict();
  EXPECT_EQ(VolumeIdentityKey(added.GetString("scheme"), added.GetString("user"), added.GetString("host"),
                              added.GetString("mountPoint")),
            "sftp://kim@nas:2222/run/user/0/gvfs/sftp:host=nas");
  EXPECT_EQ(added.GetString("path"), "/backup");
  EXPECT_FALSE(AddToAutoMountVolumeArray(block, nas)) << "the same volume twice";
  EXPECT_TRUE(block.GetArray("autoMountVolumeArray")->at(2).AsDict()->GetString("host").empty());

  VolumeMountInfo local = nas;
  local.user.clear();
  EXPECT_FALSE(AddToAutoMountVolumeArray(block, local)) << "a volume without a user is no server row";
}

TEST(VolumeRules, AFolderUnderTheMountPointOfAVolumeThatIsNotThereIsOnAnUnmountedVolume) {
  VolumeRow disk;
  disk.mountPoint = "/mnt/backup";
  bool mounted = false;
  auto isOn = [&](const char* path) { return IsOnUmountedVolume({disk}, path, [&](const VolumeRow&) { return mounted; }); };
  EXPECT_TRUE(isOn("/mnt/backup") && isOn("/mnt/backup/daily"));
  EXPECT_FALSE(isOn("/mnt/backup2"));
  mounted = true;
  EXPECT_FALSE(isOn("/mnt/backup/daily"));
}

TEST(VolumeRules, TheLocationNeverHoldsThePassword) {
  EXPECT_EQ(RemoteLocationText({"smb", "kim@home", "secret", "nas", "/my share"}), "smb://kim%40home@nas/my%20share");
  EXPECT_EQ(RemoteLocationText({"sftp", "", "", "127.0.0.1:2222", "data"}), "sftp://127.0.0.1:2222/data");
}

}  // namespace
}  // namespace marigold
