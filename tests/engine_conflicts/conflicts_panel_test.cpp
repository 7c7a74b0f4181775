// The Conflicts panel without widgets: when its indicator is lit, what it writes in the log, and
// that its controls store what they show.
#include "options/conflicts_panel.h"

#include <gtest/gtest.h>

#include "model/document_model.h"

namespace marigold::conflicts_test {
namespace {

PlistDict SessionWith(const PlistDict& conflicts) { return PlistDict{{"conflictsDict", conflicts}}; }

TEST(ConflictsPanel, TheIndicatorIsLitWhenAnyRuleDiffersFromTheDefaults) {
  EXPECT_EQ(ConflictsPanel::SetIconOn(SessionWith(DefaultConflictsDict())), "icnOptOn_Conflicts_0");
  EXPECT_EQ(ConflictsPanel::SetIconOn(DefaultSessionDict(1, "new")), "icnOptOn_Conflicts_0");
  for (const ConflictRule& rule : ConflictRules()) {
    PlistDict radio = DefaultConflictsDict();
    radio.Set(rule.radioKey, radio.GetInt(rule.radioKey) == kConflictRadioTag1 ? kConflictRadioTag2 : kConflictRadioTag1);
    EXPECT_EQ(ConflictsPanel::SetIconOn(SessionWith(radio)), "icnOptOn_Conflicts_1") << rule.radioKey;
    PlistDict ask = DefaultConflictsDict();
    ask.Set(rule.askKey, 1);
    EXPECT_EQ(ConflictsPanel::SetIconOn(SessionWith(ask)), "icnOptOn_Conflicts_1") << rule.askKey;
  }
  // Rules that read as 0 differ from every radio default; an upgraded document's file-versus-
  // folder rule (2) differs from a new session's (1).
  EXPECT_EQ(ConflictsPanel::SetIconOn(PlistDict{}), "icnOptOn_Conflicts_1");
  PlistDict upgraded = DefaultConflictsDict();
  upgraded.Set("conflictFileFolderRadio", 2);
  EXPECT_EQ(ConflictsPanel::SetIconOn(SessionWith(upgraded)), "icnOptOn_Conflicts_1");
  // A check box is set only by 1.
  PlistDict oddAsk = DefaultConflictsDict();
  oddAsk.Set("conflictSyncAsk", 2);
  EXPECT_EQ(ConflictsPanel::SetIconOn(SessionWith(oddAsk)), "icnOptOn_Conflicts_0");
}

TEST(ConflictsPanel, TheLogNamesEveryRuleWithItsChoice) {
  EXPECT_EQ(ConflictsPanel::GetLog(SessionWith(DefaultConflictsDict())),
            "\r\xE2\x80\xA2 Conflict: \r"
            "\tBackup 1: Replace the changed destination file - Ask me: No\r"
            "\tBackup 2: Skip the file - Ask me: No\r"
            "\tExact Backup: Delete the changed or added destination file - Ask me: No\r"
            "\tSync: The newer file wins - Ask me: No\r"
            "\tExact Sync: Delete the changed file anyway - Ask me: No\r"
            "\tFile Versus Folder: The file replaces the folder - Ask me: No\r");

  // Missing rules read as 0: every radio skips, nothing is asked.
  const PlistDict partial{{"conflictBackupRadio2", 2}, {"conflictBackupAsk2", 1}, {"conflictFileFolderRadio", 2}};
  EXPECT_EQ(ConflictsPanel::GetLog(SessionWith(partial)),
            "\r\xE2\x80\xA2 Conflict: \r"
            "\tBackup 1: Skip the file - Ask me: No\r"
            "\tBackup 2: Replace the newer destination file - Ask me: Yes\r"
            "\tExact Backup: Keep the destination file - Ask me: No\r"
            "\tSync: Skip both files - Ask me: No\r"
            "\tExact Sync: Copy the file back - Ask me: No\r"
            "\tFile Versus Folder: Skip both items - Ask me: No\r");
}

TEST(ConflictsPanel, ControlsStoreWhatTheyShow) {
  PlistDict session = SessionWith(PlistDict{{"conflictSyncRadio", 1}, {"conflictSyncAsk", 7}});
  ConflictsPanel panel;
  panel.SetPanels(session);
  const PlistDict loaded = panel.CurrentConflictsDict();
  EXPECT_EQ(loaded.size(), 12u);
  EXPECT_EQ(loaded.GetInt("conflictSyncAsk"), 0);  // a check box shows only on or off
  EXPECT_EQ(loaded.GetInt("conflictBackupRadio"), 0);

  panel.SetPanels(SessionWith(DefaultConflictsDict()));
  panel.SetAsk(3, true);
  EXPECT_EQ(panel.IconName(), "icnOptOn_Conflicts_1");
  panel.SetAsk(3, false);
  panel.SetRadio(5, 2);
  panel.GetPanels(session);
  EXPECT_EQ(session.GetDict("conflictsDict")->GetInt("conflictFileFolderRadio"), 2);
  EXPECT_EQ(session.GetDict("conflictsDict")->GetInt("conflictSyncRadio"), 2);
}

}  // namespace
}  // namespace marigold::conflicts_test
