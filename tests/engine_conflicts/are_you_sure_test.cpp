// The question before a run started by hand, for each kind of session it can name.
#include "engine/are_you_sure.h"

#include <gtest/gtest.h>

#include "model/document_model.h"
#include "platform/linux_file_system.h"
#include "support/temp_folder.h"
#include "support/tree_values.h"

namespace marigold::conflicts_test {
namespace {

struct SureCase {
  const char* name;
  std::int64_t task;
  bool exact;
  bool multi;
  const char* source;  // relative to the temporary folder; a trailing "/" makes it a folder
  const char* dest;
  const char* want;
};

class AreYouSure : public ::testing::TestWithParam<SureCase> {};

TEST_P(AreYouSure, NamesTheTaskAndItsItems) {
  const SureCase& c = GetParam();
  TempFolder temp;
  trees::Build(temp.Path(), {{"Photos/", ""}, {"Backup Disk/", ""}, {"Tool.app/", ""}, {"a.txt", "a"}});
  PlistDict document{{"sessionsArray", PlistArray()}, {"fileVersion", kFileVersion}, {"sessionIndex", 0}};
  AddSession(c.task, "Session", document);
  PlistDict& session = *GetSessionDict(document, 0);
  session.GetDict("consoleDict")->Set("topFolder", temp.Join(c.source));
  session.GetDict("consoleDict")->Set("bottomFolder", temp.Join(c.dest));
  session.GetDict("settingsDict")->Set("settExact", c.exact ? 1 : 0);
  session.GetDict("multiDict")->Set("multiOn", c.multi ? 1 : 0);
  LinuxFileSystem fs;

  EXPECT_EQ(AreYouSureString(document, 0, fs), c.want);
  EXPECT_EQ(AreYouSureString(document, 2, fs), "Are you sure you want to execute the tasks defined in all the sessions?");
}

INSTANTIATE_TEST_SUITE_P(
    RunConfirmation, AreYouSure,
    ::testing::Values(
        SureCase{"SyncTwoFolders", 1, false, false, "Photos", "Backup Disk/",
                 "Are you sure you want to synchronize the folder \"Photos\" with the folder \"Backup Disk\"?"},
        SureCase{"ExactBackupTwoFolders", 2, true, false, "Photos/", "Backup Disk",
                 "Are you sure you want to backup exactly the folder \"Photos\" to the folder \"Backup Disk\"?"},
        SureCase{"AFileIsNamedAFileOnBothSides", 2, false, false, "a.txt", "Backup Disk",
                 "Are you sure you want to backup the file \"a.txt\" to the file \"Backup Disk\"?"},
        SureCase{"APackageIsOneItem", 1, true, false, "Tool.app", "Backup Disk",
                 "Are you sure you want to synchronize exactly the file \"Tool.app\" with the file \"Backup Disk\"?"},
        SureCase{"AMissingSourceIsNoFolder", 1, false, false, "gone", "Backup Disk",
                 "Are you sure you want to synchronize the file \"gone\" with the file \"Backup Disk\"?"},
        SureCase{"MultipleList", 1, true, true, "Photos", "Backup Disk",
                 "Are you sure you want to synchronize exactly from the multiple list?"},
        SureCase{"MultipleListBackup", 2, false, true, "Photos", "Backup Disk",
                 "Are you sure you want to backup from the multiple list?"}),
    [](const auto& info) { return std::string(info.param.name); });

}  // namespace
}  // namespace marigold::conflicts_test
