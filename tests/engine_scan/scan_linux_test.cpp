// What Linux folders hold that the scan must cope with: letter case, special files, link loops,
// names that are not text, very long paths, and the engine's own temporaries.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstring>

#include "scan_test_support.h"
#include "support/fault_file_system.h"
#include "support/tree_values.h"

namespace marigold::scantest {
namespace {

TEST(ScanOnLinux, NamesDifferingInCaseAreTwoItemsOnACaseSensitiveVolume) {
  TempTree a{{{"Readme", "a"}}}, b{{{"README", "b"}}};
  ScanHarness h{TaskKind::kSync};
  ASSERT_TRUE(h.Scan(a.Path(), b.Path()));
  EXPECT_EQ(h.Modes(), (std::map<std::string, int>{{"README", 3}, {"Readme", 2}}));
}

// B's folder answers as a volume that ignores letter case would.
class CaseInsensitiveB : public FaultFileSystem {
 public:
  CaseInsensitiveB(FileSystem& real, std::string folder) : FaultFileSystem(real), mFolder(std::move(folder)) {}
  FsResult<bool> IsCaseInsensitive(const std::string& folder, bool) override { return folder == mFolder; }

 private:
  std::string mFolder;
};

TEST(ScanOnLinux, NamesDifferingInCaseAreOneItemWhereBIgnoresCase) {
  TempTree a{{{"Readme", "a"}, {"Docs/a", "new", T + 10}}}, b{{{"README", "a"}, {"DOCS/A", "old"}}};
  const timespec accessedLater[2] = {{T + 100, 0}, {T, 0}};  // the case-only rename is carried as metadata
  ASSERT_EQ(::utimensat(AT_FDCWD, (a / "Readme").c_str(), accessedLater, AT_SYMLINK_NOFOLLOW), 0);
  LinuxFileSystem real;
  CaseInsensitiveB fs{real, b.Path()};
  ScanHarness h{TaskKind::kSync, &fs};
  h.state.session.gCheckAttrChanged = true;
  ASSERT_TRUE(h.Scan(a.Path(), b.Path()));
  EXPECT_EQ(h.Modes(), (std::map<std::string, int>{{"Docs", 1}, {"Docs/a", 4}, {"Readme", 8}}));
  EXPECT_EQ(h.Node("Readme")->destName, "README");
  EXPECT_EQ(h.Node("Docs")->destName, "DOCS");
  EXPECT_EQ(h.Node("Docs/a")->DestName(), "A");
}

TEST(ScanOnLinux, DevicesPipesAndSocketsAreLeftAlone) {
  TempTree a{{{"pipe", "", {}, {}, 0, false, true}, {"f", "x"}}}, b;
  const std::string socketPath = a / "sock";
  int fd = ::socket(AF_UNIX, SOCK_STREAM, 0);
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  std::strncpy(address.sun_path, socketPath.c_str(), sizeof(address.sun_path) - 1);
  ASSERT_EQ(::bind(fd, reinterpret_cast<sockaddr*>(&address), sizeof(address)), 0);
  ScanHarness h{TaskKind::kBackup};
  ASSERT_TRUE(h.Scan(a.Path(), b.Path()));
  ::close(fd);
  EXPECT_EQ(h.Modes(), (std::map<std::string, int>{{"f", 2}}));
  EXPECT_EQ(h.state.scan.gAFilesScanned, 1);
}

TEST(ScanOnLinux, LinkLoopsAreItemsNotPaths) {
  TempTree a{{{"loop", ".", {}, {}, 0, true}, {"self", "self", {}, {}, 0, true}, {"d/up", "..", {}, {}, 0, true}}};
  TempTree b;
  ScanHarness h{TaskKind::kSync};
  h.state.session.gIsResolveSymLinkOn = true;
  ASSERT_TRUE(h.Scan(a.Path(), b.Path()));
  EXPECT_EQ(h.Modes(), (std::map<std::string, int>{{"d", 2}, {"d/up", 2}, {"loop", 2}, {"self", 2}}));
}

TEST(ScanOnLinux, NamesThatAreNotTextKeepEveryByte) {
  const std::string raw = "\xff\xfe-latin1-\xe9.bin";
  TempTree a{{{raw, "x"}, {"line\nbreak/in", "y"}, {"carriage\rreturn", "z"}}}, b{{{raw, "x"}}};
  ScanHarness h{TaskKind::kSync};
  ASSERT_TRUE(h.Scan(a.Path(), b.Path()));
  EXPECT_EQ(h.Modes(), (std::map<std::string, int>{{"carriage\rreturn", 2}, {"line\nbreak", 2}, {"line\nbreak/in", 2}}));
}

TEST(ScanOnLinux, TreeDeeperThanPathMax) {
  TempTree a, b, source{{{"leaf", "deep"}}};
  LinuxFileSystem fs;
  std::string deep = a.Path();
  for (int level = 0; level < 30; ++level) deep += "/" + std::string(200, static_cast<char>('a' + level % 26));
  ASSERT_GT(deep.size(), 4096u);
  ASSERT_TRUE(fs.CreateFolder(deep, 0755, true));
  ASSERT_TRUE(fs.CopyItem(source / "leaf", deep + "/leaf", {}));
  ScanHarness h{TaskKind::kBackup};
  ASSERT_TRUE(h.Scan(a.Path(), b.Path()));
  const auto modes = h.Modes();
  EXPECT_EQ(modes.size(), 31u);
  for (const auto& [path, mode] : modes) EXPECT_EQ(mode, 2) << path.size();
  EXPECT_EQ(h.state.gTotError, 0);
}

TEST(ScanOnLinux, OnlyTheEnginesOwnTemporariesAreLeftOutAndLeftoversGo) {
  TempTree a{{{"notes-MGTempFile.txt", "mine"}, {".MGTempFile-0123456789abcdef", "half"},
              {"gone/.MGTempFile-fedcba9876543210", "x"}, {"gone/old", "x"}}};
  TempTree b{{{"Marigold_Temporary_Name", "mine too"}}};
  ScanHarness h{TaskKind::kExactSync};
  h.state.gMakeDetailedLog = true;
  h.services.indexed = {b / "gone", b / "gone/old"};
  ASSERT_TRUE(h.Scan(a.Path(), b.Path()));
  // The folder still goes as a whole: a temporary inside is no reason to keep it.
  EXPECT_EQ(h.Modes(), (std::map<std::string, int>{
                           {"Marigold_Temporary_Name", 3}, {"gone", 6}, {"gone/old", 6}, {"notes-MGTempFile.txt", 2}}));
  EXPECT_EQ(marigold::trees::Read(a.Path()).count(".MGTempFile-0123456789abcdef"), 0u);
  EXPECT_EQ(marigold::trees::Read(a.Path()).count("gone/.MGTempFile-fedcba9876543210"), 0u);
  EXPECT_NE(h.state.gDetailedLogText.find(a / ".MGTempFile-0123456789abcdef"), std::string::npos);
}

}  // namespace
}  // namespace marigold::scantest
