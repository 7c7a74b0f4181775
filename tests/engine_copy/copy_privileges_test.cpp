// Folders the user may not write into. Root writes anywhere, so the executor runs in a child
// process as a user of no importance.
#include <gtest/gtest.h>
#include <grp.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <functional>

#include "copy_harness.h"
#include "support/as_user.h"
#include "support/temp_folder.h"
#include "test_trees.h"

namespace marigold::test {
namespace {

constexpr uid_t kNobody = 54321;

std::string RunAsNobody(const std::function<std::string()>& body) { return OutputAsUser(kNobody, body); }

// Opens the folders it is asked to, and notes each request.
class OpeningServices : public RunServices {
 public:
  bool UnlockChain(RunState&, const std::string& item, const std::string& mainFolder, int check) override {
    calls += item + " | " + mainFolder + " | " + std::to_string(check) + "\n";
    const std::string folder = check == 1 ? item : ParentFolderOf(item);
    return ::chmod(folder.c_str(), 0755) == 0;
  }
  std::string calls;
};

class ReadOnlyFolder : public ::testing::Test {
 protected:
  void SetUp() override {
    BuildTree(a, {{"ro/", kDir}, {"ro/f", "new"}, {"ro/g", "new"}});
    BuildTree(b, {{"ro/", kDir}, {"ro/g", "old"}});
    ASSERT_EQ(::chmod(tmp.Path().c_str(), 0755), 0);
    ASSERT_EQ(::chown(b.c_str(), kNobody, kNobody), 0);
    ASSERT_EQ(::chown((b + "/ro").c_str(), kNobody, kNobody), 0);
    ASSERT_EQ(::chmod((b + "/ro").c_str(), 0555), 0);
    ASSERT_EQ(::chmod((b + "/ro/g").c_str(), 0666), 0);
    TakeSnapshots(nodes, a, b);
  }
  TempFolder tmp;
  const std::string a = tmp.Join("A"), b = tmp.Join("B");
  std::vector<ScanNode> nodes = {
      FolderNode("ro", kCopyModeNothing, {FileNode("f", kCopyModeCopyAToB), FileNode("g", kCopyModeReplaceAToB)})};
};

TEST_F(ReadOnlyFolder, IsNotWrittenAndSaysWhy) {
  std::string reported = RunAsNobody([&] {
    CopyHarness h(a, b);
    h.Run(nodes, false);
    std::string all;
    for (const std::string& error : h.Errors()) all += error + "\n";
    return all;
  });

  EXPECT_EQ(reported,
            "Can't copy the file \"{A}/ro/f\"\rto: \"{B}/ro/f\"\rInsufficient privileges\n"
            "Can't replace the file \"{B}/ro/g\"\rInsufficient privileges\n");
  EXPECT_EQ(ReadTree(b), (Tree{{"ro/", kDir}, {"ro/g", "old"}}));
}

TEST_F(ReadOnlyFolder, IsWrittenOnceItsChainIsUnlocked) {
  std::string reported = RunAsNobody([&] {
    OpeningServices services;
    CopyHarness h(a, b);
    EngineContext context{h.state, h.fs, h.proxy, services, h.errors, h.preferences};
    CopyExecutor executor(context);
    executor.CopyItems(nodes, a, b, false);
    return services.calls + "errors " + std::to_string(h.state.gTotError);
  });

  EXPECT_EQ(reported, b + "/ro | " + b + " | 1\nerrors 0");
  EXPECT_EQ(ReadTree(b), (Tree{{"ro/", kDir}, {"ro/f", "new"}, {"ro/g", "new"}}));
}

}  // namespace
}  // namespace marigold::test
