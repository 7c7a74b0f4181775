// Folders the user may not write into. Root writes anywhere, so the executor runs in a child
// process as a user of no importance. Opening such folders for their owner is run whole in the
// validation tests.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "copy_harness.h"
#include "support/as_user.h"

namespace marigold::test {
namespace {

constexpr uid_t kNobody = 54321;

TEST(ReadOnlyFolder, IsNotWrittenAndSaysWhy) {
  CopyHarness h({{"ro/", kDir}, {"ro/f", "new"}, {"ro/g", "new"}}, {{"ro/", kDir}, {"ro/g", "old"}});
  const std::string& b = h.b;
  ASSERT_EQ(::chmod(h.tmp->Path().c_str(), 0755), 0);
  ASSERT_EQ(::chown(b.c_str(), kNobody, kNobody), 0);
  ASSERT_EQ(::chown((b + "/ro").c_str(), kNobody, kNobody), 0);
  ASSERT_EQ(::chmod((b + "/ro").c_str(), 0555), 0);
  ASSERT_EQ(::chmod((b + "/ro/g").c_str(), 0666), 0);
  std::vector<ScanNode> nodes = {
      FolderNode("ro", kCopyModeNothing, {FileNode("f", kCopyModeCopyAToB), FileNode("g", kCopyModeReplaceAToB)})};

  std::string reported = OutputAsUser(kNobody, [&] {
    h.Run(nodes);
    std::string all;
    for (const std::string& error : h.Errors()) all += error + "\n";
    return all;
  });

  EXPECT_EQ(reported,
            "Can't copy the file \"{A}/ro/f\"\rto: \"{B}/ro/f\"\rInsufficient privileges\n"
            "Can't replace the file \"{B}/ro/g\"\rInsufficient privileges\n");
  EXPECT_EQ(trees::Read(b), (Tree{{"ro/", kDir}, {"ro/g", "old"}}));
}

}  // namespace
}  // namespace marigold::test
