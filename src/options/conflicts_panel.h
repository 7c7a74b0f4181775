// Rules of the Conflicts panel that do not need widgets: the defaults of a new session, the
// titles of its controls (defined once here; the desktop program shows the same words), the
// state of its indicator and its lines in the run log. The panel edits the session's
// "conflictsDict": per rule a radio pair (the selected tag) and an "ask" check box (its state).
#pragma once

#include <array>
#include <cstdint>
#include <string>

#include "model/document_model.h"
#include "util/plist_value.h"

namespace marigold {

// One rule of the panel, in the order the panel and the log show them.
struct ConflictRule {
  const char* logName;    // "Backup", "Exact Backup", ... (looked up in the language table)
  const char* logSuffix;  // what follows the name in the log: " 1: ", " 2: " or ": "
  const char* radioKey;
  const char* askKey;
  std::int64_t goAheadTag;  // the radio tag that carries the action out; any other tag skips
  const char* goAheadTitle;
  const char* skipTitle;
};

// The six rules: backup (destination changed), backup (destination newer), exact backup,
// synchronisation, exact synchronisation, file versus folder.
const std::array<ConflictRule, 6>& ConflictRules();

// The tags of the two radio buttons of every rule.
inline constexpr std::int64_t kConflictRadioTag1 = 1;
inline constexpr std::int64_t kConflictRadioTag2 = 2;
// The title of every rule's "ask" check box.
inline constexpr const char* kConflictAskTitle = "Ask me";

// The title of the radio button that `tag` selects in `rule`. A tag that selects no button
// (a missing key reads as 0) acts as "skip", so it shows the skip title.
std::string ConflictRadioTitle(const ConflictRule& rule, std::int64_t tag);

// True when any rule of `conflictsDict` differs from DefaultConflictsDict: a radio by its tag (a
// missing one reads as 0 and so differs), an ask box by whether it is set (only 1 sets it).
bool ConflictsDifferFromDefaults(const PlistDict& conflictsDict);

// The panel's logic over the values of its controls.
class ConflictsPanel {
 public:
  // Loads the controls from the session's "conflictsDict" (missing keys read as 0).
  void SetPanels(const PlistDict& session);
  // Stores CurrentConflictsDict under the session's "conflictsDict".
  void GetPanels(PlistDict& session) const;
  // Every rule's key with the controls' values: radios as the selected tag, check boxes 0/1.
  PlistDict CurrentConflictsDict() const { return mControls; }

  // A control changed: the radio of rule `rule` selects `tag`, or its check box is set.
  // Both refresh the indicator (BtnOnOff).
  void SetRadio(std::size_t rule, std::int64_t tag);
  void SetAsk(std::size_t rule, bool ask);

  // The indicator's image name for `session`: "icnOptOn_Conflicts_1" when its rules differ
  // from the defaults, "icnOptOn_Conflicts_0" otherwise.
  static std::string SetIconOn(const PlistDict& session);
  // The indicator for the controls as they stand.
  std::string IconName() const;

  // The panel's part of the run log's header for `session`: "\r• Conflict: \r" and one line per
  // rule, "\t<name><suffix><radio title> - <ask title>: Yes|No\r".
  static std::string GetLog(const PlistDict& session);

 private:
  PlistDict mControls = DefaultConflictsDict();
};

}  // namespace marigold
