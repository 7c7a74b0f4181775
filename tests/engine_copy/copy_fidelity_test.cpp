// A first backup through the executor of a tree holding every kind of item, compared with an
// independent tool: after the copy, rsync finds nothing to change in content, modes, owners,
// times, links, user attributes or access lists, whether new files travel one by one or on the
// pipeline's helper threads. Sparse and large files, and other volumes, are the platform tests'
// concern: the executor hands every file to the same copy call.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <cstdlib>

#include "copy_harness.h"
#include "support/temp_folder.h"

namespace marigold::test {
namespace {

std::string Output(const std::string& command) {
  std::string output;
  FILE* pipe = ::popen(command.c_str(), "r");
  if (pipe == nullptr) return "<popen failed>";
  std::array<char, 4096> buffer;
  for (std::size_t n; (n = std::fread(buffer.data(), 1, buffer.size(), pipe)) > 0;) output.append(buffer.data(), n);
  int status = ::pclose(pipe);
  if (status != 0) output += "<exit " + std::to_string(status) + ">";
  return output;
}

std::string Shell(const std::string& path) { return "'" + path + "'"; }

void SetAttribute(const std::string& path, const char* name, const std::string& value) {
  ASSERT_EQ(::lsetxattr(path.c_str(), name, value.data(), value.size(), 0), 0) << path << " " << name;
}

class Fidelity : public testing::TestWithParam<bool> {};

INSTANTIATE_TEST_SUITE_P(OneByOneAndPipelined, Fidelity, testing::Bool());

TEST_P(Fidelity, EveryKindOfItemArrivesAsItWas) {
  if (std::system("command -v rsync >/dev/null && command -v setfacl >/dev/null") != 0)
    GTEST_SKIP() << "rsync or setfacl missing";
  TempFolder tmp;
  const std::string a = tmp.Join("A"), b = tmp.Join("B"), top = a + "/top";
  const std::string oddName = "odd \xff\xfe name", lineName = "new\nline\rname";
  trees::Build(a, {{"top/nested/deeper/deepest/file", "deep"},
                {"top/empty/inner-empty/", kDir},
                {"top/.hidden-file", "h"},
                {"top/.hidden-folder/x", "x"},
                {"top/plain", "plain text"},
                {"top/link-to-file", LinkTo("plain")},
                {"top/link-to-folder", LinkTo("nested")},
                {"top/link-to-nowhere", LinkTo("does/not/exist")},
                {"top/xattrs", "with attributes"},
                {"top/acl-file", "acl"},
                {"top/acl-folder/inside", "i"},
                {"top/readonly", "r"},
                {"top/private/secret", "s"},
                {"top/old", "old"},
                {"top/" + oddName, "not utf-8"},
                {"top/" + lineName, "line breaks"},
                {"top/Tool.app/Contents/bin", "exe"},
                {"top/owned", "someone else's"}});
  SetAttribute(top + "/xattrs", "user.one", "1");
  SetAttribute(top + "/xattrs", "user.binary", std::string("\0\x01\xff", 3));
  SetAttribute(top + "/nested", "user.folder", "on a folder");
  ASSERT_EQ(std::system(("setfacl -m u:54321:rw,g:54321:r " + Shell(top + "/acl-file")).c_str()), 0);
  ASSERT_EQ(std::system(("setfacl -m u:54321:rx -d -m u:54321:rwx " + Shell(top + "/acl-folder")).c_str()), 0);
  ASSERT_EQ(::chown((top + "/owned").c_str(), 54321, 54322), 0);
  ASSERT_EQ(::chmod((top + "/readonly").c_str(), 0444), 0);
  ASSERT_EQ(::chmod((top + "/private").c_str(), 0700), 0);
  ASSERT_EQ(::chmod((top + "/Tool.app").c_str(), 0750), 0);
  trees::SetModified(top + "/old", 489'000'000, 123'456'789);
  trees::SetModified(top + "/link-to-file", 500'000'000, 1);
  // Folder dates last: filling a folder moves its date.
  for (const char* folder : {"nested/deeper/deepest", "nested/deeper", "nested", "empty/inner-empty", "private", ""})
    trees::SetModified(top + (*folder ? std::string("/") + folder : std::string()), 600'000'000, 987);
  trees::Build(b, {});

  CopyHarness h(a, b);
  h.fs.AllowConcurrentCalls(GetParam());
  std::vector<ScanNode> nodes = {FolderNode("top", kCopyModeCopyAToB, CopyEverythingTree(top))};
  ASSERT_TRUE(h.Run(nodes));
  ASSERT_TRUE(h.Errors().empty()) << h.Errors().front();

  // Every copied file carries the run's backup date, which the source does not have: set it
  // aside before comparing.
  for (const char* file : {"plain", "xattrs", "old", "Tool.app"}) {
    EXPECT_EQ(h.real.GetBackupDate(b + "/top/" + file), kRunStart) << file;
    ::lremovexattr((b + "/top/" + file).c_str(), "user.marigold.backupdate");
  }
  std::string listing = Output("find " + Shell(b + "/top") + " -type f -print0");
  for (std::size_t start = 0, end; (end = listing.find('\0', start)) != std::string::npos; start = end + 1)
    ::lremovexattr(listing.substr(start, end - start).c_str(), "user.marigold.backupdate");

  EXPECT_EQ(Output("rsync -aAX --dry-run --itemize-changes --checksum " + Shell(top + "/") + " " + Shell(b + "/top/")),
            "");
}

// The pipeline changes when a file's data travels, never what is said of it: the detailed log,
// the errors and the counters of a first copy are those of one-by-one copying, line for line,
// with a failing copy and a file too large for the pipeline among many files.
TEST(Pipeline, SaysWhatOneByOneCopyingSays) {
  Tree tree;
  for (int folder = 0; folder < 12; ++folder)
    for (int file = 0; file < 20; ++file)
      tree.emplace("d" + std::to_string(folder) + "/f" + std::to_string(file), std::string(file * 97, 'x'));
  tree.emplace("d4/large", std::string(3 << 20, 'L'));
  tree.emplace("d6/sub/inner", "i");
  tree.emplace("d9/empty/", kDir);

  struct Outcome {
    std::string log, counters;
    std::vector<std::string> errors;
  };
  auto copy = [&](bool pipelined) {
    CopyHarness h(tree, {});
    h.fs.AllowConcurrentCalls(pipelined);
    h.fs.AddRule(FailCall(FsOperation::kCopyItem, h.a + "/d3/f7", EIO));
    std::vector<ScanNode> nodes = CopyEverythingTree(h.a);
    EXPECT_FALSE(h.Run(nodes));
    // The roots' own dates are the run's to set, not the executor's.
    EXPECT_EQ(Output("rsync -a --dry-run --itemize-changes --checksum --exclude=/d3/f7 " + Shell(h.a + "/") + " " +
                     Shell(h.b + "/") + " | sed '/ [.]\\/$/d'"),
              "");
    return Outcome{h.Log(), Counters(h.state.Side(false)), h.Errors()};
  };
  const Outcome oneByOne = copy(false), pipelined = copy(true);
  EXPECT_EQ(pipelined.log, oneByOne.log);
  EXPECT_EQ(pipelined.errors, oneByOne.errors);
  EXPECT_EQ(pipelined.counters, oneByOne.counters);
  EXPECT_EQ(oneByOne.counters, "FoldersCreated=14 FilesCopied=241 ItemVisible=241");
  ASSERT_EQ(oneByOne.errors.size(), 1u);
}

}  // namespace
}  // namespace marigold::test
