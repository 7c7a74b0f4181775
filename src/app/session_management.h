// The session menu's commands as logic without widgets: the name check, new, duplicate, rename,
// remove, and the sort sheet's reordering. Each command works on the document root, keeps its
// `sessionIndex` (the selected entry; session count + 1 is "All Sessions") up to date, and either
// returns the selected index afterwards or refuses with the text the user is shown, changing
// nothing. All calls come from the main thread.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "util/plist_value.h"

namespace marigold {

// What choosing an item of the session menu means.
enum class SessionMenuTag { None = -1, Session = 0, AllSessions = 1, New = 2, Duplicate = 3, Rename = 4,
                            Remove = 5, Sort = 6 };

struct FixedMenuItem {
  const char* title;  // English text, looked up with GLS; "" for a separator
  SessionMenuTag tag;
};

// The eight items that follow the sessions in the menu: a separator at index count, "All
// Sessions" at count + 1, then the commands. Their titles are names no session may take.
inline constexpr std::array<FixedMenuItem, 8> kFixedSessionMenuItems{{
    {"", SessionMenuTag::None},
    {"All Sessions", SessionMenuTag::AllSessions},
    {"", SessionMenuTag::None},
    {"New Session…", SessionMenuTag::New},
    {"Duplicate Session…", SessionMenuTag::Duplicate},
    {"Rename Session…", SessionMenuTag::Rename},
    {"Remove Session…", SessionMenuTag::Remove},
    {"Sort Sessions…", SessionMenuTag::Sort},
}};

// Every title of the menu, in order: the session names (a nameless session gets and keeps
// "Session %ld", as the menu stores it), then the localised fixed items.
std::vector<std::string> SessionMenuTitles(PlistDict& root);

// The outcome of a command: on success the selected index afterwards (also stored as the root's
// sessionIndex) and whether the document changed; on refusal the message and nothing changed.
struct SessionCommandResult {
  bool ok = false;
  bool changed = false;
  std::int64_t selectedIndex = 0;
  std::string refusal;
};

enum class NameVerdict { Accept, Unchanged, Refuse };
struct NameCheck {
  NameVerdict verdict = NameVerdict::Accept;
  std::string message;  // set when refused
};

// The name sheet's check. `renamingIndex` is the session being renamed, nothing for a new name.
// Empty: "Please insert a valid name."; a fixed item's title: "Can't use this name."; the renamed
// session's own name: Unchanged; another session's name: "Name duplicated.". Exact comparison.
NameCheck AskNameApply(PlistDict& root, const std::string& name, std::optional<std::int64_t> renamingIndex);
// The same check against given menu titles (the first `sessionCount` are the sessions').
NameCheck CheckSessionName(const std::vector<std::string>& titles, std::int64_t sessionCount, const std::string& name,
                           std::optional<std::int64_t> renamingIndex);

// The names the sheet proposes: "Session %d" with count + 1, and "Copy %d of %@" with count + 1
// and the session's name.
std::string ProposedNewSessionName(const PlistDict& root);
std::string ProposedDuplicateName(PlistDict& root, std::int64_t index);

// Appends a session with task 1 (synchronise) under `name` and selects it.
SessionCommandResult NewSession(PlistDict& root, const std::string& name);
// Appends a deep copy of the session at `index` under `name` and selects it. Refused on "All
// Sessions".
SessionCommandResult DuplicateSession(PlistDict& root, std::int64_t index, const std::string& name);
// Renames the session at `index` and selects it; its own name again changes nothing. Refused on
// "All Sessions".
SessionCommandResult RenameSession(PlistDict& root, std::int64_t index, const std::string& name);
// Removes the session at `index`, or with `allButFirst` every session but the first (then the
// first is selected). Refused when only one session is left and on "All Sessions". A selection
// left past the end moves to the last session.
SessionCommandResult RemoveSession(PlistDict& root, std::int64_t index, bool allButFirst);
// The confirmation the remove command asks before it acts.
std::string RemoveConfirmationText(PlistDict& root, std::int64_t index, bool allButFirst);

// The sort sheet: it edits a copy of the sessions; the document takes the copy only when applied.
class SortSessions {
 public:
  explicit SortSessions(PlistArray sessions) : mSessions(std::move(sessions)) {}

  std::int64_t numberOfRowsInTableView() const { return static_cast<std::int64_t>(mSessions.size()); }
  // The "progressive" column shows the 1-based row number, any other column the session's name.
  std::string ObjectValue(const std::string& columnIdentifier, std::int64_t row) const;
  // The dragged sessions of `rows`, skipping rows outside the list; nothing when none is left
  // (the drag is refused).
  std::optional<PlistArray> ArrayFromIndexes(const std::vector<std::int64_t>& rows) const;
  // A drop above `row`: each dragged session found in the copy moves before the session that was
  // at `row` (to the end when `row` is past the last). Returns the moved rows' new indexes;
  // empty when nothing moved (the drop fails).
  std::vector<std::int64_t> AcceptDrop(const PlistArray& dragged, std::int64_t row);
  // Removes the selected rows; refuses with "Can't remove all the Sessions." when every row is
  // selected.
  std::optional<std::string> DeleteSelectedRows(const std::vector<std::int64_t>& rows);

  const PlistArray& sessions() const { return mSessions; }

 private:
  PlistArray mSessions;
};

// The sheet was applied: the document takes `sorted`, and the selection follows the session that
// was selected to its new place ("All Sessions" stays so; a session that is gone selects the last).
std::int64_t ApplySortedSessions(PlistDict& root, PlistArray sorted);

// The sessionName a session holds; "" when it has none.
std::string SessionNameOf(const PlistValue& session);

// The index of the first session named `name`; the "All Sessions" index for that menu title when
// no session has it; nothing otherwise.
std::optional<std::int64_t> FindSessionIndex(PlistDict& root, const std::string& name);

}  // namespace marigold
