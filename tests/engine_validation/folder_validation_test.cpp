// Which main-folder pairs a task accepts, and what it says when it refuses one.
#include <gtest/gtest.h>
#include <unistd.h>

#include <functional>

#include "guard_harness.h"

namespace marigold::guard_test {
namespace {

// A folder that looks like an installed system, for the volume answers to call a mount point.
void MakeSystem(TempFolder& temp, const std::string& relative) {
  trees::Build(temp.Join(relative), {{"etc/os-release", "ID=test\n"}, {"usr/bin/", ""}, {"home/a.txt", "a"}});
}

struct PairCase {
  const char* name;
  trees::Tree tree;             // under the temporary folder
  std::string source, dest;     // relative to it; "" means not given, "/" the system root
  std::function<void(GuardCall&)> prepare;
  bool valid;
  std::string message;          // the whole recorded error, "" when none; "~" prefix: contains
};

class MainFolders : public ::testing::TestWithParam<PairCase> {};

std::string Full(const GuardCall& call, const std::string& relative) {
  if (relative.empty() || relative == "/") return relative;
  return call.temp.Join(relative);
}

TEST_P(MainFolders, AreJudged) {
  const PairCase& c = GetParam();
  GuardCall call;
  trees::Build(call.temp.Path(), c.tree);
  if (c.prepare) c.prepare(call);
  const std::string source = Full(call, c.source), dest = Full(call, c.dest);
  std::string expected = c.message;
  for (std::size_t at; (at = expected.find("<T>")) != std::string::npos;) expected.replace(at, 3, call.temp.Path());

  EXPECT_EQ(call.guard.FoldersAreValid(call.state, source, dest, 0), c.valid);
  if (expected.empty()) {
    EXPECT_EQ(call.state.gTotError, 0) << call.state.mErrString;
  } else {
    EXPECT_EQ(call.state.gTotError, 1);
    if (expected.front() == '~') EXPECT_NE(call.state.mErrString.find(expected.substr(1)), std::string::npos) << call.state.mErrString;
    else EXPECT_EQ(call.state.mErrString, expected);
    EXPECT_NE(call.state.gDetailedLogText.find(call.state.mErrString), std::string::npos);
  }
}

const std::string kHelp = "\r\rPlease take a look at our web page:\rhttps://www.marigold.example/help/backup-boot-disk.html";

void NotRoot(GuardCall& call) { call.state.mEuidIsRoot = false; }
void Root(GuardCall& call) { call.state.mEuidIsRoot = true; }
void SystemVolume(GuardCall& call) { call.volumes->mountPoints.insert(call.temp.Join("sys")); }

const PairCase kPairs[] = {
        PairCase{"TwoFolders", {{"a/", ""}, {"b/", ""}}, "a", "b", nullptr, true, ""},
        PairCase{"TwoFilesOneName", {{"a/f.txt", "1"}, {"b/f.txt", "2"}}, "a/f.txt", "b/f.txt", nullptr, true, ""},
        PairCase{"MissingSource", {{"b/", ""}}, "nowhere", "b", nullptr, false,
                 "Cannot find the source folder:\r\"<T>/nowhere\""},
        PairCase{"MissingDestination", {{"a/", ""}}, "a", "gone", nullptr, false,
                 "Cannot find the destination folder:\r\"<T>/gone\""},
        PairCase{"SourceNotGiven", {{"b/", ""}}, "", "b", nullptr, false, "Source Folder not defined"},
        PairCase{"DestinationNotGiven", {{"a/", ""}}, "a", "", nullptr, false, "Destination Folder not defined"},
        PairCase{"EqualFolders", {{"a/", ""}}, "a", "a/", nullptr, false, "Cannot set equal source and destination"},
        // Two spellings of one folder, and folders inside one another, are refused before a scan.
        PairCase{"SameFolderThroughDot", {{"a/s/", ""}}, "a/./s", "a/s", nullptr, false,
                 "Cannot set equal source and destination"},
        PairCase{"SameFolderThroughDotDot", {{"a/s/", ""}, {"a/t/", ""}}, "a/s", "a/t/../s", nullptr, false,
                 "Cannot set equal source and destination"},
        PairCase{"DestinationInsideSource", {{"a/sub/", ""}}, "a", "a/sub", nullptr, false,
                 "Cannot set a destination folder inside the source folder"},
        PairCase{"SourceInsideDestination", {{"b/sub/", ""}}, "b/sub", "b", nullptr, false,
                 "Cannot set a source folder inside the destination folder"},
        PairCase{"InsideThroughALink", {{"a/sub/", ""}}, "l/sub", "a",
                 [](GuardCall& c) { ::symlink(c.temp.Join("a").c_str(), c.temp.Join("l").c_str()); }, false,
                 "Cannot set a source folder inside the destination folder"},
        PairCase{"SiblingsSharingAPrefix", {{"a/", ""}, {"ab/", ""}}, "a", "ab", nullptr, true, ""},
        PairCase{"FolderAndFile", {{"a/", ""}, {"f", "x"}}, "a", "f", nullptr, false,
                 "Can't set a source folder and a destination file"},
        PairCase{"FileAndFolder", {{"a/", ""}, {"f", "x"}}, "f", "a", nullptr, false,
                 "Can't set a source file and a destination folder"},
        PairCase{"TwoFilesWithOtherNames", {{"f", "x"}, {"g", "y"}}, "f", "g", nullptr, false,
                 "Can't set 2 files with different names"},
        PairCase{"PackageCountsAsFile", {{"Tool.app/x", "1"}, {"b/", ""}}, "Tool.app", "b", nullptr, false,
                 "Can't set a source file and a destination folder"},
        // A system folder that is not a mount point is an ordinary folder.
        PairCase{"SystemFolderNotMounted", {{"b/", ""}}, "sys", "b",
                 [](GuardCall& c) { MakeSystem(c.temp, "sys"); NotRoot(c); }, true, ""},
        PairCase{"SystemVolumeAsRoot", {{"b/", ""}}, "sys", "b",
                 [](GuardCall& c) { MakeSystem(c.temp, "sys"); SystemVolume(c); Root(c); }, true, ""},
        PairCase{"SystemVolumeWithoutRootGoesOnWhenAsked", {{"b/", ""}}, "sys", "b",
                 [](GuardCall& c) { MakeSystem(c.temp, "sys"); SystemVolume(c); NotRoot(c); c.proxy.alertAnswers = {0}; },
                 true,
                 "The source is a bootable volume, therefore it should be processed with the root's privileges. If you "
                 "continue you will not get a bootable backup disk.\rIn order to properly perform the sync/backup of a "
                 "bootable volume, please log in as root or mark the check-box \"Run as root\" in the MG Preferences "
                 "panel." + kHelp + "\rIt explains how to back-up the boot disk properly"},
        PairCase{"SystemVolumeWithoutRootStops", {{"a/", ""}}, "a", "sys",
                 [](GuardCall& c) { MakeSystem(c.temp, "sys"); SystemVolume(c); NotRoot(c); c.proxy.alertAnswers = {1}; },
                 false, "~The destination is a bootable volume"},
        PairCase{"SystemRootWithoutRootNeverGoesOn", {{"b/", ""}}, "/", "b",
                 [](GuardCall& c) { NotRoot(c); c.proxy.alertAnswers = {0}; }, false,
                 "Cannot process the boot disk without the root's privileges. Please log in as root or mark the "
                 "check-box \"Run as root\" in the MG Preferences panel." + kHelp +
                 "\rIt explains how to back-up a bootable volume properly"},
        PairCase{"SystemVolumeWithLinksFollowedFailsEvenAsRoot", {{"b/", ""}}, "sys", "b",
                 [](GuardCall& c) {
                   MakeSystem(c.temp, "sys"); SystemVolume(c); Root(c);
                   c.state.session.gIsResolveSymLinkOn = true;
                   c.state.session.gCreateDestFolder = true;
                   c.proxy.alertAnswers = {0};
                 },
                 false,
                 "We discourage to sync/backup the boot disk using the check-box \"Resolve symbolic links\" on. Unmark "
                 "that check-box in the MG Settings panel." + kHelp + "\rIt explains how to back-up the boot disk properly"},
        PairCase{"SystemRootOntoOwnerlessVolumeAsks", {{"b/", ""}}, "/", "b",
                 [](GuardCall& c) { Root(c); c.volumes->ownerless.insert(c.temp.Join("b")); c.proxy.alertAnswers = {1}; },
                 false, "~The destination volume settings don't allow to manage ownership and permissions."},
        PairCase{"SystemVolumeFromOwnerlessSourceGoesOnWhenAsked", {{"a/", ""}}, "a", "sys",
                 [](GuardCall& c) {
                   MakeSystem(c.temp, "sys"); SystemVolume(c); Root(c);
                   c.volumes->ownerless.insert(c.temp.Join("a"));
                   c.proxy.alertAnswers = {0};
                 },
                 true, "~The source volume settings don't allow"}};

INSTANTIATE_TEST_SUITE_P(Pairs, MainFolders, ::testing::ValuesIn(kPairs),
                         [](const auto& info) { return std::string(info.param.name); });

TEST(MainFolderLinks, AreFollowedOrRefused) {
  GuardCall call;
  trees::Build(call.temp.Path(), {{"real/", ""}, {"b/", ""}});
  ASSERT_EQ(::symlink(call.temp.Join("real").c_str(), call.temp.Join("toReal").c_str()), 0);
  ASSERT_EQ(::symlink(call.temp.Join("none").c_str(), call.temp.Join("toNone").c_str()), 0);
  ASSERT_EQ(::symlink(call.temp.Join("b").c_str(), call.temp.Join("toB").c_str()), 0);

  // The task works on the folder the link stands for.
  EXPECT_TRUE(call.guard.FoldersAreValid(call.state, call.temp.Join("toReal"), call.temp.Join("b"), 0));
  EXPECT_EQ(call.state.gSourceFolder, call.temp.Join("real"));

  EXPECT_FALSE(call.guard.FoldersAreValid(call.state, call.temp.Join("toNone"), call.temp.Join("b"), 0));
  EXPECT_EQ(call.state.mErrString, "Can't resolve the main source SYM link \"" + call.temp.Join("toNone") + "\"");
  EXPECT_FALSE(call.guard.FoldersAreValid(call.state, call.temp.Join("real"), call.temp.Join("toNone"), 0));
  EXPECT_EQ(call.state.mErrString, "Can't resolve the main destination SYM link \"" + call.temp.Join("toNone") + "\"");
  // A link to the other folder is the same folder.
  EXPECT_FALSE(call.guard.FoldersAreValid(call.state, call.temp.Join("toB"), call.temp.Join("b"), 0));
  EXPECT_EQ(call.state.mErrString, "Cannot set equal source and destination");
}

TEST(MainFolderNames, NotGivenShowInTheLog) {
  GuardCall call;
  EXPECT_FALSE(call.guard.FoldersAreValid(call.state, "", "", 0));
  EXPECT_EQ(call.state.gSourceFolder, "Source Folder not defined");
  EXPECT_EQ(call.state.gDestFolder, "Destination Folder not defined");
}

// The real volume answers: a folder bound over itself is a mount point, and with a system in it
// it is a system volume.
TEST(SystemVolumes, AreMountPointsHoldingASystem) {
  if (::geteuid() != 0) GTEST_SKIP() << "mounting needs root";
  TempFolder temp;
  trees::Build(temp.Join("sys"), {{"etc/os-release", "ID=test\n"}, {"usr/bin/", ""}});
  trees::Build(temp.Join("plain"), {{"etc/os-release", "ID=test\n"}});
  const std::string sys = temp.Join("sys"), plain = temp.Join("plain");
  LinuxFileSystem fs;
  BootVolumes volumes(fs);
  EXPECT_FALSE(volumes.IsRootOfBootableVolume(sys));
  if (std::system(("mount --bind '" + sys + "' '" + sys + "' && mount --bind '" + plain + "' '" + plain + "'").c_str()) != 0)
    GTEST_SKIP() << "bind mounts refused here";
  EXPECT_TRUE(volumes.IsRootOfBootableVolume(sys));
  EXPECT_FALSE(volumes.IsRootOfBootableVolume(plain));  // no usr/bin
  EXPECT_FALSE(volumes.IsRootOfBootableVolume(sys + "/usr"));
  EXPECT_TRUE(volumes.CanVolumeManageOwnership(sys));
  EXPECT_EQ(std::system(("umount '" + sys + "' && umount '" + plain + "'").c_str()), 0);
}

}  // namespace
}  // namespace marigold::guard_test
