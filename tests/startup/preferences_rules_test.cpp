#include "app/preferences_rules.h"

#include <gtest/gtest.h>

#include <functional>

#include "app/preferences.h"
#include "logging/email_account.h"
#include "support/plist_print.h"
#include "util/well_scramble.h"

namespace marigold {
namespace {

PlistDict Account(const char* from, const char* to, const char* id, const char* smtp) {
  PlistDict account = GetSendEmailDefaultDict();
  account.Set("mSendEmailFrom", from);
  account.Set("mSendEmailTo", to);
  account.Set("mSendEmailAccountID", id);
  account.Set("mSendEmailSMTP", smtp);
  return account;
}

TEST(CheckEmailRecipient, AcceptsOnlyPlausibleAddressesOutsideTheMakersDomain) {
  for (const char* good : {"a@b.c", "robin@example.org", "a@b.c, d@e.f"}) EXPECT_TRUE(CheckEmailRecipient(good)) << good;
  for (const char* bad : {"", "a@b", "a@b.", "a@bc", "ab.cd", "a@.bc", ".a@b.c", "@ab.cd", "ab.c@",
                          "help@marigold.example", "help@MARIGOLD.EXAMPLE"})
    EXPECT_FALSE(CheckEmailRecipient(bad)) << bad;
}

TEST(CheckSendEmailDict, NamesTheFirstMissingFieldInOrder) {
  struct Case { PlistDict account; const char* reason; };
  for (const Case& c : {
           Case{Account("", "", "", ""), "Missing parameter \"Email From\" on the Send Log via email panel."},
           Case{Account("me@x.org", "nobody", "", ""), "Missing parameter \"Email To\" on the Send log via email panel."},
           Case{Account("me@x.org", "you@x.org", "", ""), "Missing parameter \"Account ID\" on the Send log via email panel."},
           Case{Account("me@x.org", "you@x.org", "id", ""), "Missing parameter \"SMTP\" on the Send log via email panel."},
           Case{Account("me@x.org", "you@x.org", "id", "smtp.x.org"), ""}}) {
    std::string reason;
    EXPECT_EQ(CheckSendEmailDict(c.account, &reason), *c.reason == '\0') << c.reason;
    EXPECT_EQ(reason, c.reason);
  }
}

TEST(PrefGet, RefusesWithTheReasonAndChangesNothing) {
  const char* kCount = "The Delete Logs text field must contain a value greater than zero.";
  struct Case {
    const char* name;
    std::function<void(PreferencesPanelValues&)> edit;
    const char* alert;
    std::int64_t fieldAfter;
  };
  const std::vector<Case> cases{
      {"CountZero", [](auto& p) { p.prefDeleteLogsField = 0; }, kCount, 1},
      {"CountNegative", [](auto& p) { p.prefDeleteLogsField = -4; }, kCount, 1},
      {"MailWithoutSender", [](auto& p) { p.prefSendEmail = 1; },
       "Missing parameter \"Email From\" on the Send Log via email panel.", 7},
      {"MailIsCheckedBeforeTheCount",
       [](auto& p) {
         p.prefSendEmail = 1;
         p.sendEmailDict = Account("me@x.org", "x", "id", "smtp");
         p.prefDeleteLogsField = 0;
       },
       "Missing parameter \"Email To\" on the Send log via email panel.", 0},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    PreferencesPanelValues panel = PrefSet(GetDefaultPreferencesDict("/logs", false));
    c.edit(panel);
    PlistDict prefs = GetDefaultPreferencesDict("/logs", false);
    const PlistDict before = prefs;
    PrefGetResult result = PrefGet(panel, prefs);
    EXPECT_FALSE(result.ok);
    EXPECT_EQ(result.alertText, c.alert);
    EXPECT_EQ(result.selectDeleteLogsField, c.alert == std::string(kCount));
    EXPECT_EQ(panel.prefDeleteLogsField, c.fieldAfter);
    EXPECT_EQ(prefs, before);
  }
}

TEST(PrefGet, CopiesEveryControlAndScramblesTheAccount) {
  PreferencesPanelValues panel = PrefSet(GetDefaultPreferencesDict("/logs", false));
  EXPECT_EQ(panel.prefOnError, 3);
  EXPECT_NE(panel.lastCheckDateText, "Never");
  panel.prefSendEmail = 1;
  panel.sendEmailDict = Account("me@x.org", "you@x.org, them@x.org", "me", "smtp.x.org");
  panel.sendEmailDict.Set("mSendEmailPassword", "hunter2");
  panel.prefOnError = 1;
  panel.prefDeleteLogsField = 14;
  panel.prefModificationDeltaField = 3;
  panel.prefPathLogFolder = "/var/log/marigold";
  panel.prefTabViewIdentifier = "Email";
  panel.prefUpdateFrequency = 2;
  PlistDict prefs = GetDefaultPreferencesDict("/logs", false);
  std::vector<std::string> keysBefore = prefs.Keys();
  ASSERT_TRUE(PrefGet(panel, prefs).ok);
  EXPECT_EQ(prefs.Keys(), keysBefore) << "copied in place, nothing added";
  const PlistData* stored = prefs.GetData("prefSendEmailDict");
  ASSERT_TRUE(stored);
  EXPECT_EQ(std::string(stored->begin(), stored->end()).find("hunter2"), std::string::npos);
  // What the panel shows next time is what it stored.
  PreferencesPanelValues shown = PrefSet(prefs);
  EXPECT_EQ(shown.sendEmailDict, panel.sendEmailDict);
  EXPECT_EQ(std::make_tuple(shown.prefSendEmail, shown.prefOnError, shown.prefDeleteLogsField,
                            shown.prefModificationDeltaField, shown.prefPathLogFolder,
                            shown.prefTabViewIdentifier, shown.prefUpdateFrequency),
            std::make_tuple(1, 1, 14, 3, "/var/log/marigold", "Email", 2));
  // Without a check date the panel says so; an unreadable account shows the defaults.
  prefs.Remove("prefUpdateLastCheckDate");
  prefs.Set("prefSendEmailDict", PlistData{1, 2, 3});
  EXPECT_EQ(PrefSet(prefs).lastCheckDateText, "Never");
  EXPECT_EQ(PrefSet(prefs).sendEmailDict, GetSendEmailDefaultDict());
}

TEST(PrefEnabling, DeleteLogControlsNeedBothBoxes) {
  PreferencesPanelValues panel;
  panel.prefDeleteLogsOn = 1;
  EXPECT_FALSE(PrefEnabling(panel).deleteLogsField) << "saving is off";
  EXPECT_FALSE(PrefEnabling(panel).deleteLogsOn);
  panel.prefSaveLogFile = 1;
  PreferencesEnabling on = PrefEnabling(panel);
  EXPECT_TRUE(on.deleteLogsField && on.deleteLogsPop && on.deleteLogsOn && on.logFileFormat && on.saveLogFileWhen);
  EXPECT_FALSE(on.sendEmailWhen || on.modificationDeltaField);
  panel.prefDeleteLogsOn = 0;
  EXPECT_FALSE(PrefEnabling(panel).deleteLogsPop);
}

}  // namespace
}  // namespace marigold
