// The preferences panel's rules without its widgets: the values it shows, the validation that
// runs when it is applied, and which controls are enabled.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "util/plist_value.h"

namespace marigold {

// What the panel's controls hold. Check boxes are 0/1, pop-ups and radio groups their tag.
struct PreferencesPanelValues {
  // check boxes
  std::int64_t prefSyncAndQuit = 0;
  std::int64_t prefAskConfirmation = 0;
  std::int64_t prefPreview = 0;
  std::int64_t prefPreviewExpanded = 0;
  std::int64_t prefBeepWhenDone = 0;
  std::int64_t prefShutDown = 0;
  std::int64_t prefQuit = 0;
  std::int64_t prefSaveLogFile = 0;
  std::int64_t prefDeleteLogsOn = 0;
  std::int64_t prefSendEmail = 0;
  std::int64_t prefRoot = 0;
  std::int64_t prefModificationDelta = 0;
  // radio groups and pop-ups
  std::int64_t prefOnError = 0;
  std::int64_t prefSaveLogFileWhen = 0;
  std::int64_t prefLogFileFormat = 0;
  std::int64_t prefLogKind = 0;
  std::int64_t prefDeleteLogsPop = 0;
  std::int64_t prefSendEmailWhen = 0;
  std::int64_t prefUpdateFrequency = 0;
  // text fields
  std::int64_t prefDeleteLogsField = 0;
  std::int64_t prefModificationDeltaField = 0;
  std::string prefPathLogFolder;
  // the mail account being edited, in plain form; stored scrambled
  PlistDict sendEmailDict;
  std::string prefTabViewIdentifier;
  // shown only: "Never" or the localised date of the last update check
  std::string lastCheckDateText;
};

// The panel's controls filled from the preferences (the account unscrambled; the defaults when
// it cannot be read).
PreferencesPanelValues PrefSet(const PlistDict& prefs);

struct PrefGetResult {
  bool ok = false;
  std::string alertText;           // the "Warning:" alert's text when not ok
  bool selectDeleteLogsField = false;  // the delete-logs field was set to 1 and is to be selected
};

// Validates the panel and, when it passes, copies every control into `prefs` (the account
// scrambled). On failure `prefs` is unchanged and `panel` may be corrected (delete-logs count 1).
PrefGetResult PrefGet(PreferencesPanelValues& panel, PlistDict& prefs);

struct PreferencesEnabling {
  bool saveLogFileWhen = false;
  bool logFileFormat = false;
  bool deleteLogsOn = false;
  bool deleteLogsPop = false;
  bool deleteLogsField = false;
  bool sendEmailWhen = false;
  bool modificationDeltaField = false;
};

// Which dependent controls are enabled for the given state of the panel.
PreferencesEnabling PrefEnabling(const PreferencesPanelValues& panel);

// "Never" when there is no date, else the date in the long date style and short time style of
// the user's locale.
std::string LastCheckDateText(const std::optional<PlistDate>& date);

}  // namespace marigold
