// Rules of the Settings panel that do not need widgets: the defaults, how the controls show and
// store settingsDict (two boxes are inverted), the settings icon, the exact box's title, the
// sub-folder name pop-up and its custom-format sheet. The desktop program's widgets mirror a
// SettingsPanel and call it on every change; it never touches a widget itself.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "util/alert_request.h"
#include "options/sub_folder_name.h"
#include "model/document_model.h"
#include "util/plist_value.h"

namespace marigold {

// The check boxes in panel order, each named by the key it stores ("settCreateDestFolderCheck"
// stores settCreateDestFolder), with its title.
struct SettingsBox {
  const char* key;
  const char* title;
};
const std::vector<SettingsBox>& SettingsBoxes();
// The box's state for a stored value and back: the invisible-items and locked-items boxes are
// ticked (1) when the value is 0, and a ticked one stores 0; every other box is its value.
std::int64_t BoxStateFromValue(std::string_view key, std::int64_t value);
std::int64_t ValueFromBoxState(std::string_view key, std::int64_t state);

// Whether the session's settings icon shows "on": its settingsDict differs from the defaults of
// its own task, the sub-folder name kind and custom format left out of the comparison.
bool SetIconOn(const PlistDict& session);
// The image the icon shows: "icnOptOn_Settings_1" when on, else "icnOptOn_Settings_0".
std::string SettingsIconName(const PlistDict& session);

// The exact box's title and tool tip for the selected task (backup is 2, anything else syncs).
std::string ExactBoxTitle(std::int64_t task);
std::string ExactBoxToolTip(std::int64_t task);

// One item of the sub-folder name pop-up.
struct PopUpItem {
  std::int64_t tag;
  std::string title;
};
// Every item of the pop-up with today's values in the date items' titles, then the date formats
// (tag 1000 and above, titled by their format).
std::vector<PopUpItem> UpdateCreateSubFolderPopuUp(const SubFolderNaming& naming);

// What happens when a button of the custom-format sheet is pressed.
struct FormatSheetOutcome {
  bool stop = false;            // the sheet closes with `modalResult`
  std::int64_t modalResult = 0;
  std::optional<AlertRequest> alert;  // shown while the sheet stays open
};
// Button tag 0 cancels; any other accepts only a format whose preview is not empty.
FormatSheetOutcome AskForDestFolderCustomNameApply(std::int64_t buttonTag, const std::string& preview);

// The panel's controls for the selected session, without widgets.
class SettingsPanel {
 public:
  // `document` is the open document; its selected session is given to SetPanels.
  SettingsPanel(const PlistDict& document, SubFolderNaming naming = {});

  // Shows `settings` of the session at `sessionIndex`.
  void SetPanels(const PlistDict& settings, std::int64_t sessionIndex);
  // The controls read back into a settings dictionary (radio and pop-up as tags, boxes as their
  // stored values, the custom format as the sheet left it).
  PlistDict CurrentSettingsDict() const;
  // Stores CurrentSettingsDict as the session's settingsDict.
  void GetPanels(PlistDict& session) const;

  std::int64_t task() const { return mTask; }
  std::int64_t BoxState(std::string_view key) const;
  std::int64_t nameKind() const { return mNameKind; }
  const std::string& customFormat() const { return mCustomFormat; }
  // The name shown under the pop-up ("" when the box is off or the kind names nothing).
  const std::string& label() const { return mLabel; }
  bool isNameKindPopUpEnabled() const { return BoxState("settCreateDestFolderCheck") == 1; }

  void SettingsSetTask(std::int64_t task) { mTask = task; }
  void SetBox(std::string_view key, std::int64_t state);
  // The sub-folder box: enables the pop-up with it and refreshes the label.
  void SettingsSetDestFolderOn(std::int64_t state);
  // A pop-up choice. Kind 0 needs the custom-format sheet: true is returned and the sheet's
  // result goes to CustomFormatSheetEnded; any other kind refreshes the label at once.
  bool SettingsSetDestFolderNameKindPop(std::int64_t tag);
  // The live preview of the sheet for the format typed so far.
  std::string UpdateAskSubFolderResultField(const std::string& format) const;
  // A sheet button: on acceptance the format is kept and the label refreshed.
  FormatSheetOutcome CustomFormatButton(std::int64_t buttonTag, const std::string& format);
  // The sheet closed with `result`; 0 (cancel) puts the pop-up back on its previous item.
  void CustomFormatSheetEnded(std::int64_t result);

 private:
  void RefreshLabel();

  const PlistDict& mDocument;
  SubFolderNaming mNaming;
  std::int64_t mSessionIndex = 0;
  std::int64_t mTask = 1;
  std::map<std::string, std::int64_t, std::less<>> mBoxes;
  std::int64_t mNameKind = kSubFolderNameSource;
  std::int64_t mPreviousTag = kSubFolderNameSource;
  std::string mCustomFormat;
  std::string mLabel;
};

}  // namespace marigold
