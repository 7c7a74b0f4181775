// The command line's password input and script check.
#include <gtest/gtest.h>

#include <sys/stat.h>

#include "model/document_model.h"
#include "support/cli_runner.h"
#include "util/plist_io.h"
#include "util/well_scramble.h"

namespace marigold {
namespace {

using cli_testing::CliHome;
using cli_testing::CliResult;
using cli_testing::ReadFileText;

class VolumeCli : public ::testing::Test {
 protected:
  void SetUp() override { ASSERT_EQ(h.Run({"doc", "new", file}).status, 0); }
  CliHome h;
  std::string file = h.Path("work.mgy");
};

TEST_F(VolumeCli, APasswordIsReadFromStandardInputAndStoredScrambledInAPrivateFile) {
  const CliResult set = h.Run({"doc", "set", file, "autoMountDict.autoMountVolumeArray.2.password=-"}, "moss-and-rain\n");
  ASSERT_EQ(set.status, 0) << set.err;
  const PlistDict root = ReadPlistDictFile(file).value_or(PlistDict());
  const PlistDict* row =
      GetSessionDict(root, 0)->GetDict("autoMountDict")->GetArray("autoMountVolumeArray")->at(2).AsDict();
  ASSERT_NE(row->GetData("password"), nullptr);
  EXPECT_EQ(GetWellData(*row->GetData("password")), "moss-and-rain");
  EXPECT_EQ(ReadFileText(file).find("moss-and-rain"), std::string::npos);
  struct stat info {};
  ASSERT_EQ(::stat(file.c_str(), &info), 0);
  EXPECT_EQ(info.st_mode & 0777, 0700u);
}

TEST_F(VolumeCli, ScriptCheckPrintsWhatThePanelWouldSay) {
  ASSERT_EQ(h.Run({"doc", "set", file, "appleScriptDict.asStartOn=1", "appleScriptDict.asStartText=echo fine",
                   "appleScriptDict.asEndOn=1", "appleScriptDict.asEndText=if true"})
                .status,
            0);
  const CliResult bad = h.Run({"doc", "script-check", file});
  EXPECT_EQ(bad.status, 1);
  EXPECT_EQ(bad.out.rfind("Error in the second script.\nError: 2.\n", 0), 0u) << bad.out;

  ASSERT_EQ(h.Run({"doc", "set", file, "appleScriptDict.asEndText=true"}).status, 0);
  const CliResult good = h.Run({"doc", "script-check", file});
  EXPECT_EQ(good.status, 0);
  EXPECT_EQ(good.out, "");
}

}  // namespace
}  // namespace marigold
