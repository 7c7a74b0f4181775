// The Settings panel without widgets: icon, inverted boxes, exact title, pop-up, custom-format
// sheet and the log block.
#include <gtest/gtest.h>

#include "model/document_model.h"
#include "options/settings_log.h"
#include "options/settings_panel.h"
#include "fixed_naming.h"
#include "util/quillon_additions.h"

namespace marigold {
namespace {

TEST(SettingsIcon, LightsOnlyForChangesThatMatter) {
  PlistDict session = DefaultSessionDict(2, "Backup");
  PlistDict& settings = *session.GetDict("settingsDict");
  EXPECT_EQ(SettingsIconName(session), "icnOptOn_Settings_0");
  settings.Set("settCreateDestFolderCustomNameFormat", "yyyy");
  settings.Set("settCreateDestFolderNameKind", 1003);
  EXPECT_FALSE(SetIconOn(session));
  settings.Set("settMoveToTrash", 1);
  EXPECT_EQ(SettingsIconName(session), "icnOptOn_Settings_1");

  // Compared with the defaults of the session's own task, whatever order its keys are in.
  PlistDict turned = DefaultSessionDict(1, "Sync");
  PlistDict reordered;
  const PlistDict backupDefaults = DefaultSettingsDict(2);
  for (auto it = backupDefaults.end(); it != backupDefaults.begin();) {
    --it;
    reordered.Set(it->first, it->second);
  }
  turned.Set("settingsDict", reordered);
  EXPECT_FALSE(SetIconOn(turned));
  reordered.Set("settUnknownKey", 1);
  turned.Set("settingsDict", reordered);
  EXPECT_TRUE(SetIconOn(turned));
  turned.Remove("settingsDict");
  EXPECT_TRUE(SetIconOn(turned));
}

TEST(SettingsPanelBoxes, InvertedBoxesShowAndStoreTheOpposite) {
  PlistDict document = NewTemplate();
  SettingsPanel panel(document, Fixed());
  PlistDict settings = DefaultSettingsDict(2);
  panel.SetPanels(settings, 1);
  EXPECT_EQ(panel.BoxState("settInvisibleItems"), 0);
  EXPECT_EQ(panel.BoxState("settLockedItems"), 0);
  EXPECT_EQ(panel.BoxState("settCreateDestFolderCheck"), 0);
  EXPECT_EQ(panel.CurrentSettingsDict(), settings);  // a round trip changes nothing, order included

  panel.SetBox("settInvisibleItems", 1);
  panel.SetBox("settMoveToTrash", 1);
  panel.SettingsSetTask(1);
  PlistDict session = DefaultSessionDict(2, "Backup");
  panel.GetPanels(session);
  const PlistDict& stored = *session.GetDict("settingsDict");
  EXPECT_EQ(stored.GetInt("settInvisibleItems"), 0);
  EXPECT_EQ(stored.GetInt("settLockedItems"), 1);
  EXPECT_EQ(stored.GetInt("settMoveToTrash"), 1);
  EXPECT_EQ(stored.GetInt("settTask"), 1);
  EXPECT_EQ(stored.size(), settings.size());
}

TEST(SettingsSubFolder, PopUpTitlesShowTodaysValues) {
  std::vector<PopUpItem> items = UpdateCreateSubFolderPopuUp(Fixed());
  ASSERT_GE(items.size(), 7u);
  EXPECT_EQ(items[2].title, "Day of week (Tuesday)");
  EXPECT_EQ(items[3].title, "Short day of week (Tue)");
  EXPECT_EQ(items[4].title, "Month of year (March)");
  EXPECT_EQ(items[5].title, "Short month of year (Mar)");
  EXPECT_EQ(items[6].tag, 1000);
  EXPECT_EQ(SubFolderDateFormat(items[6].tag), items[6].title);  // a date item's title is its format
}

TEST(SettingsSubFolder, LabelFollowsBoxAndKind) {
  PlistDict document = NewTemplate();
  GetSessionDict(document, 0)->GetDict("consoleDict")->Set("topFolder", "/home/robin/Photos");
  SettingsPanel panel(document, Fixed());
  panel.SetPanels(*GetSessionDict(document, 0)->GetDict("settingsDict"), 0);
  EXPECT_EQ(panel.label(), "");
  EXPECT_FALSE(panel.isNameKindPopUpEnabled());
  panel.SettingsSetDestFolderOn(1);
  EXPECT_TRUE(panel.isNameKindPopUpEnabled());
  EXPECT_EQ(panel.label(), "Photos");
  EXPECT_FALSE(panel.SettingsSetDestFolderNameKindPop(4));
  EXPECT_EQ(panel.label(), "March");
}

TEST(SettingsSubFolder, CustomFormatSheet) {
  PlistDict document = NewTemplate();
  GetSessionDict(document, 0)->GetDict("consoleDict")->Set("topFolder", "/home/robin/Photos");
  SettingsPanel panel(document, Fixed());
  panel.SetPanels(*GetSessionDict(document, 0)->GetDict("settingsDict"), 0);
  panel.SettingsSetDestFolderOn(1);
  panel.SettingsSetDestFolderNameKindPop(5);

  // Cancelled: the pop-up goes back to where it was.
  ASSERT_TRUE(panel.SettingsSetDestFolderNameKindPop(0));
  FormatSheetOutcome cancel = panel.CustomFormatButton(0, "anything");
  EXPECT_TRUE(cancel.stop);
  EXPECT_EQ(cancel.modalResult, 0);
  panel.CustomFormatSheetEnded(cancel.modalResult);
  EXPECT_EQ(panel.nameKind(), 5);
  EXPECT_EQ(panel.label(), "Mar");
  EXPECT_EQ(panel.customFormat(), kDefaultCustomNameFormat);

  // A format that names nothing keeps the sheet open behind the warning.
  ASSERT_TRUE(panel.SettingsSetDestFolderNameKindPop(0));
  EXPECT_EQ(panel.UpdateAskSubFolderResultField("kSrc yyyy"), "Photos 2024");
  FormatSheetOutcome refused = panel.CustomFormatButton(1, "");
  EXPECT_FALSE(refused.stop);
  ASSERT_TRUE(refused.alert);
  EXPECT_EQ(refused.alert->title, "Warning:");
  EXPECT_EQ(refused.alert->text, "Format not valid. Please look at samples here below.");
  EXPECT_EQ(refused.alert->buttons, (std::vector<std::string>{"OK"}));

  FormatSheetOutcome accepted = panel.CustomFormatButton(1, "kSrc yyyy");
  EXPECT_TRUE(accepted.stop);
  EXPECT_EQ(accepted.modalResult, 1);
  panel.CustomFormatSheetEnded(accepted.modalResult);
  EXPECT_EQ(panel.nameKind(), 0);
  EXPECT_EQ(panel.label(), "Photos 2024");
  EXPECT_EQ(panel.CurrentSettingsDict().GetString("settCreateDestFolderCustomNameFormat"), "kSrc yyyy");
}

TEST(SettingsLog, BlockOfADefaultBackup) {
  PlistDict settings = DefaultSettingsDict(2);
  EXPECT_EQ(GetLog(settings),
            "\r• Settings: \r\tTask: Backup\r\tExact Backup: No\r\tSkip invisible items: No\r\tSkip locked items: No"
            "\r\tResolve aliases: No\r\tResolve symbolic links: No\r\tSkip empty folders: No"
            "\r\tCopy new items only: No\r\tTreat packages as folders: No\r\tMove deleted items to the Trash: No"
            "\r\tSkip the privileges check: No\r");
  settings.Set("settInvisibleItems", 0);
  settings.Set("settTask", 1);
  settings.Set("settExact", 1);
  settings.Set("settMoveToTrash", 1);
  settings.Set("settCheckAttrChanged", 1);  // not part of the block
  const std::string log = GetLog(settings);
  EXPECT_NE(log.find("\r\tTask: Synchronize\r\tExact Sync: Yes\r\tSkip invisible items: Yes\r"), std::string::npos);
  EXPECT_NE(log.find("\r\tMove deleted items to the Trash: Yes\r"), std::string::npos);
  EXPECT_EQ(log.find("attribute"), std::string::npos);
}

}  // namespace
}  // namespace marigold
