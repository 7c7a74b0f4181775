#include "options/settings_panel.h"

#include "model/document_model.h"
#include "options/settings_titles.h"
#include "util/strings_table.h"

#include <utility>

namespace marigold {

namespace {

// Changing only these does not light the icon: they matter only with the sub-folder box on.
constexpr std::string_view kIconIgnores[] = {"settCreateDestFolderNameKind", "settCreateDestFolderCustomNameFormat"};

bool IsInverted(std::string_view key) { return key == "settInvisibleItems" || key == "settLockedItems"; }

// The stored key of a box; only the sub-folder box is named apart from its key.
std::string_view StoredKey(std::string_view boxKey) {
  return boxKey == "settCreateDestFolderCheck" ? std::string_view("settCreateDestFolder") : boxKey;
}

bool IgnoredByIcon(std::string_view key) {
  for (std::string_view ignored : kIconIgnores)
    if (key == ignored) return true;
  return false;
}

// Every compared key of `a` is in `b` with the same value.
bool ComparedKeysMatch(const PlistDict& a, const PlistDict& b) {
  for (const auto& [key, value] : a) {
    if (IgnoredByIcon(key)) continue;
    const PlistValue* other = b.Find(key);
    if (other == nullptr || !(*other == value)) return false;
  }
  return true;
}

std::string WithValue(const char* title, const std::string& value) {
  std::string text = GLS(title);
  const std::size_t at = text.find("%@");
  if (at != std::string::npos) text.replace(at, 2, value);
  return text;
}

}  // namespace

const std::vector<SettingsBox>& SettingsBoxes() {
  static const std::vector<SettingsBox> kBoxes = {
      {"settExact", kExactSyncTitle},
      {"settInvisibleItems", kSkipInvisibleItemsTitle},
      {"settLockedItems", kSkipLockedItemsTitle},
      {"settResolveAlias", kResolveAliasTitle},
      {"settResolveSymLink", kResolveSymLinkTitle},
      {"settNewItemsOnly", kNewItemsOnlyTitle},
      {"settSkipEmptyFolders", kSkipEmptyFoldersTitle},
      {"settPackagesFolders", kPackagesFoldersTitle},
      {"settMoveToTrash", kMoveToTrashTitle},
      {"settCheckAttrChanged", kCheckAttrChangedTitle},
      {"settCreateDestFolderCheck", kCreateDestFolderTitle},
      {"settSkipCheckPermissions", kSkipCheckPermissionsTitle},
  };
  return kBoxes;
}

std::int64_t BoxStateFromValue(std::string_view key, std::int64_t value) {
  if (!IsInverted(key)) return value;
  return value == 0 ? 1 : 0;
}

std::int64_t ValueFromBoxState(std::string_view key, std::int64_t state) {
  if (!IsInverted(key)) return state;
  return state == 1 ? 0 : 1;
}

bool SetIconOn(const PlistDict& session) {
  const PlistDict* settings = session.GetDict("settingsDict");
  if (settings == nullptr) return true;
  const PlistDict defaults = DefaultSettingsDict(settings->GetInt("settTask"));
  return !ComparedKeysMatch(*settings, defaults) || !ComparedKeysMatch(defaults, *settings);
}

std::string SettingsIconName(const PlistDict& session) {
  return SetIconOn(session) ? "icnOptOn_Settings_1" : "icnOptOn_Settings_0";
}

std::string ExactBoxTitle(std::int64_t task) { return GLS(task == 2 ? kExactBackupTitle : kExactSyncTitle); }

std::string ExactBoxToolTip(std::int64_t task) { return GLS(task == 2 ? kExactBackupToolTip : kExactSyncToolTip); }

std::vector<PopUpItem> UpdateCreateSubFolderPopuUp(const SubFolderNaming& naming) {
  std::vector<PopUpItem> items = {
      {kSubFolderNameCustom, GLS(kSubFolderCustomTitle)},
      {kSubFolderNameSource, GLS(kSubFolderSourceTitle)},
      {kSubFolderNameWeekday, WithValue(kSubFolderWeekdayTitle, naming.Format("EEEE"))},
      {kSubFolderNameShortWeekday, WithValue(kSubFolderShortWeekdayTitle, naming.Format("EEE"))},
      {kSubFolderNameMonth, WithValue(kSubFolderMonthTitle, naming.Format("MMMM"))},
      {kSubFolderNameShortMonth, WithValue(kSubFolderShortMonthTitle, naming.Format("MMM"))},
  };
  std::int64_t tag = kSubFolderNameFirstFormat;
  for (const std::string& format : SubFolderDateFormats()) items.push_back({tag++, format});
  return items;
}

FormatSheetOutcome AskForDestFolderCustomNameApply(std::int64_t buttonTag, const std::string& preview) {
  FormatSheetOutcome outcome;
  if (buttonTag == 0) {
    outcome.stop = true;
    return outcome;
  }
  // A format is good exactly when it makes a name: that is all a folder needs.
  if (!preview.empty()) {
    outcome.stop = true;
    outcome.modalResult = buttonTag;
    return outcome;
  }
  AlertRequest alert;
  alert.title = GLS("Warning:");
  alert.text = GLS("Format not valid. Please look at samples here below.");
  alert.buttons = {GLS("OK")};
  outcome.alert = std::move(alert);
  return outcome;
}

SettingsPanel::SettingsPanel(const PlistDict& document, SubFolderNaming naming)
    : mDocument(document), mNaming(std::move(naming)) {
  SetPanels(DefaultSettingsDict(1), 0);
}

void SettingsPanel::SetPanels(const PlistDict& settings, std::int64_t sessionIndex) {
  mSessionIndex = sessionIndex;
  mTask = settings.GetInt("settTask");
  mBoxes.clear();
  for (const SettingsBox& box : SettingsBoxes())
    mBoxes[box.key] = BoxStateFromValue(box.key, settings.GetInt(StoredKey(box.key)));
  mNameKind = settings.GetInt("settCreateDestFolderNameKind", kSubFolderNameSource);
  mPreviousTag = mNameKind;
  mCustomFormat = settings.GetString("settCreateDestFolderCustomNameFormat");
  RefreshLabel();
}

PlistDict SettingsPanel::CurrentSettingsDict() const {
  // Starting from the defaults keeps the keys in the order every new document has.
  PlistDict settings = DefaultSettingsDict(mTask);
  for (const SettingsBox& box : SettingsBoxes())
    settings.Set(StoredKey(box.key), ValueFromBoxState(box.key, BoxState(box.key)));
  settings.Set("settCreateDestFolderNameKind", mNameKind);
  settings.Set("settCreateDestFolderCustomNameFormat", mCustomFormat);
  return settings;
}

void SettingsPanel::GetPanels(PlistDict& session) const { session.Set("settingsDict", CurrentSettingsDict()); }

std::int64_t SettingsPanel::BoxState(std::string_view key) const {
  auto found = mBoxes.find(key);
  return found == mBoxes.end() ? 0 : found->second;
}

void SettingsPanel::SetBox(std::string_view key, std::int64_t state) {
  auto found = mBoxes.find(key);
  if (found != mBoxes.end()) found->second = state;
  if (key == "settCreateDestFolderCheck") RefreshLabel();
}

void SettingsPanel::SettingsSetDestFolderOn(std::int64_t state) { SetBox("settCreateDestFolderCheck", state); }

bool SettingsPanel::SettingsSetDestFolderNameKindPop(std::int64_t tag) {
  mPreviousTag = mNameKind;
  mNameKind = tag;
  if (tag == kSubFolderNameCustom) return true;
  RefreshLabel();
  return false;
}

std::string SettingsPanel::UpdateAskSubFolderResultField(const std::string& format) const {
  return GetDestSubFolderName(&mDocument, mSessionIndex, true, std::nullopt, kSubFolderNameCustom, format, mNaming)
      .value_or("");
}

FormatSheetOutcome SettingsPanel::CustomFormatButton(std::int64_t buttonTag, const std::string& format) {
  FormatSheetOutcome outcome = AskForDestFolderCustomNameApply(buttonTag, UpdateAskSubFolderResultField(format));
  if (outcome.stop && outcome.modalResult != 0) {
    mCustomFormat = format;
    RefreshLabel();
  }
  return outcome;
}

void SettingsPanel::CustomFormatSheetEnded(std::int64_t result) {
  if (result == 0) mNameKind = mPreviousTag;
  RefreshLabel();
}

void SettingsPanel::RefreshLabel() {
  mLabel = GetDestSubFolderName(&mDocument, mSessionIndex, isNameKindPopUpEnabled(), std::nullopt, mNameKind,
                                mCustomFormat, mNaming)
               .value_or("");
}

}  // namespace marigold
