#include "app/preferences_rules.h"

#include <unicode/datefmt.h>
#include <unicode/unistr.h>

#include <memory>

#include "logging/email_account.h"
#include "util/quillon_additions.h"
#include "util/strings_table.h"
#include "util/well_scramble.h"

namespace marigold {
std::string LastCheckDateText(const std::optional<PlistDate>& date) {
  if (!date) return GLS("Never");
  std::unique_ptr<icu::DateFormat> format(
      icu::DateFormat::createDateTimeInstance(icu::DateFormat::kLong, icu::DateFormat::kShort));
  if (!format) return GLS("Never");
  icu::UnicodeString text;
  format->format(UnixSecondsFromDate(*date) * 1000.0, text);
  std::string out;
  text.toUTF8String(out);
  return out;
}

PreferencesPanelValues PrefSet(const PlistDict& prefs) {
  PreferencesPanelValues panel;
  panel.prefSyncAndQuit = prefs.GetInt("prefSyncAndQuit");
  panel.prefAskConfirmation = prefs.GetInt("prefAskConfirmation");
  panel.prefPreview = prefs.GetInt("prefPreview");
  panel.prefPreviewExpanded = prefs.GetInt("prefPreviewExpanded");
  panel.prefBeepWhenDone = prefs.GetInt("prefBeepWhenDone");
  panel.prefShutDown = prefs.GetInt("prefShutDown");
  panel.prefQuit = prefs.GetInt("prefQuit");
  panel.prefSaveLogFile = prefs.GetInt("prefSaveLogFile");
  panel.prefDeleteLogsOn = prefs.GetInt("prefDeleteLogsOn");
  panel.prefSendEmail = prefs.GetInt("prefSendEmail");
  panel.prefRoot = prefs.GetInt("prefRoot");
  panel.prefModificationDelta = prefs.GetInt("prefModificationDelta");
  panel.prefOnError = prefs.GetInt("prefOnError");
  panel.prefSaveLogFileWhen = prefs.GetInt("prefSaveLogFileWhen");
  panel.prefLogFileFormat = prefs.GetInt("prefLogFileFormat");
  panel.prefLogKind = prefs.GetInt("prefLogKind");
  panel.prefDeleteLogsPop = prefs.GetInt("prefDeleteLogsPop");
  panel.prefSendEmailWhen = prefs.GetInt("prefSendEmailWhen");
  panel.prefUpdateFrequency = prefs.GetInt("prefUpdateFrequency");
  panel.prefDeleteLogsField = prefs.GetInt("prefDeleteLogsField");
  panel.prefModificationDeltaField = prefs.GetInt("prefModificationDeltaField");
  panel.prefPathLogFolder = prefs.GetString("prefPathLogFolder");
  panel.prefTabViewIdentifier = prefs.GetString("prefTabViewIdentifier", "General");
  std::optional<PlistDict> account;
  if (const PlistData* data = prefs.GetData("prefSendEmailDict")) account = GetWellDict(*data);
  panel.sendEmailDict = account.value_or(GetSendEmailDefaultDict());
  panel.lastCheckDateText = LastCheckDateText(prefs.GetDate("prefUpdateLastCheckDate"));
  return panel;
}

PrefGetResult PrefGet(PreferencesPanelValues& panel, PlistDict& prefs) {
  PrefGetResult result;
  if (panel.prefSendEmail == 1) {
    std::string reason;
    if (!CheckSendEmailDict(panel.sendEmailDict, &reason)) {
      result.alertText = reason.empty() ? MissingEmailParameterText() : reason;
      return result;
    }
  }
  if (panel.prefDeleteLogsField < 1) {
    result.alertText = GLS("The Delete Logs text field must contain a value greater than zero.");
    panel.prefDeleteLogsField = 1;
    result.selectDeleteLogsField = true;
    return result;
  }
  prefs.Set("prefSyncAndQuit", panel.prefSyncAndQuit);
  prefs.Set("prefAskConfirmation", panel.prefAskConfirmation);
  prefs.Set("prefPreview", panel.prefPreview);
  prefs.Set("prefPreviewExpanded", panel.prefPreviewExpanded);
  prefs.Set("prefBeepWhenDone", panel.prefBeepWhenDone);
  prefs.Set("prefShutDown", panel.prefShutDown);
  prefs.Set("prefQuit", panel.prefQuit);
  prefs.Set("prefSaveLogFile", panel.prefSaveLogFile);
  prefs.Set("prefDeleteLogsOn", panel.prefDeleteLogsOn);
  prefs.Set("prefSendEmail", panel.prefSendEmail);
  prefs.Set("prefRoot", panel.prefRoot);
  prefs.Set("prefModificationDelta", panel.prefModificationDelta);
  prefs.Set("prefOnError", panel.prefOnError);
  prefs.Set("prefSaveLogFileWhen", panel.prefSaveLogFileWhen);
  prefs.Set("prefLogFileFormat", panel.prefLogFileFormat);
  prefs.Set("prefLogKind", panel.prefLogKind);
  prefs.Set("prefDeleteLogsPop", panel.prefDeleteLogsPop);
  prefs.Set("prefSendEmailWhen", panel.prefSendEmailWhen);
  prefs.Set("prefDeleteLogsField", panel.prefDeleteLogsField);
  prefs.Set("prefModificationDeltaField", panel.prefModificationDeltaField);
  prefs.Set("prefPathLogFolder", panel.prefPathLogFolder);
  prefs.Set("prefSendEmailDict", SetWellDict(panel.sendEmailDict));
  prefs.Set("prefTabViewIdentifier", panel.prefTabViewIdentifier);
  prefs.Set("prefUpdateFrequency", panel.prefUpdateFrequency);
  result.ok = true;
  return result;
}

PreferencesEnabling PrefEnabling(const PreferencesPanelValues& panel) {
  PreferencesEnabling enabling;
  bool saving = panel.prefSaveLogFile == 1;
  enabling.saveLogFileWhen = saving;
  enabling.logFileFormat = saving;
  enabling.deleteLogsOn = saving;
  enabling.deleteLogsPop = saving && panel.prefDeleteLogsOn == 1;
  enabling.deleteLogsField = enabling.deleteLogsPop;
  enabling.sendEmailWhen = panel.prefSendEmail == 1;
  enabling.modificationDeltaField = panel.prefModificationDelta == 1;
  return enabling;
}

}  // namespace marigold
