#include "app/session_management.h"

#include <algorithm>

#include "model/document_model.h"
#include "util/strings_table.h"

namespace marigold {
namespace {

// Fills the first occurrence of `placeholder` in a localised pattern; translations keep the
// printf-style placeholders the English text has.
std::string Fill(std::string pattern, std::string_view placeholder, const std::string& value) {
  if (const auto at = pattern.find(placeholder); at != std::string::npos) {
    pattern.replace(at, placeholder.size(), value);
  }
  return pattern;
}

SessionCommandResult Refused(const char* englishText) {
  SessionCommandResult result;
  result.refusal = GLS(englishText);
  return result;
}

SessionCommandResult Selected(PlistDict& root, std::int64_t index, bool changed) {
  root.Set("sessionIndex", index);
  SessionCommandResult result;
  result.ok = true;
  result.changed = changed;
  result.selectedIndex = index;
  return result;
}

// The name check as a command sees it: refused, or the verdict to act on.
std::optional<SessionCommandResult> RefusedName(const NameCheck& check) {
  if (check.verdict != NameVerdict::Refuse) return std::nullopt;
  SessionCommandResult result;
  result.refusal = check.message;
  return result;
}

void SetSessionName(PlistValue& session, const std::string& name) {
  PlistDict* dict = session.AsDict();
  if (dict == nullptr) return;
  if (dict->GetDict("consoleDict") == nullptr) dict->Set("consoleDict", PlistDict());
  dict->GetDict("consoleDict")->Set("sessionName", name);
}

}  // namespace

std::vector<std::string> SessionMenuTitles(PlistDict& root) {
  std::vector<std::string> titles;
  const std::int64_t count = SessionCount(root);
  for (std::int64_t i = 0; i < count; ++i) titles.push_back(EnsureSessionName(root, i));
  for (const FixedMenuItem& item : kFixedSessionMenuItems) titles.push_back(GLS(item.title));
  return titles;
}

NameCheck AskNameApply(PlistDict& root, const std::string& name, std::optional<std::int64_t> renamingIndex) {
  return CheckSessionName(SessionMenuTitles(root), SessionCount(root), name, renamingIndex);
}

NameCheck CheckSessionName(const std::vector<std::string>& titles, std::int64_t sessionCount, const std::string& name,
                           std::optional<std::int64_t> renamingIndex) {
  if (name.empty()) return {NameVerdict::Refuse, GLS("Please insert a valid name.")};
  if (renamingIndex && *renamingIndex >= 0 && *renamingIndex < sessionCount &&
      titles[static_cast<std::size_t>(*renamingIndex)] == name) {
    return {NameVerdict::Unchanged, ""};
  }
  const auto found = std::find(titles.begin(), titles.end(), name);
  if (found == titles.end()) return {NameVerdict::Accept, ""};
  if (found - titles.begin() >= sessionCount) return {NameVerdict::Refuse, GLS("Can't use this name.")};
  return {NameVerdict::Refuse, GLS("Name duplicated.")};
}

std::string ProposedNewSessionName(const PlistDict& root) {
  return Fill(GLS("Session %d"), "%d", std::to_string(SessionCount(root) + 1));
}

std::string ProposedDuplicateName(PlistDict& root, std::int64_t index) {
  const std::string pattern = Fill(GLS("Copy %d of %@"), "%d", std::to_string(SessionCount(root) + 1));
  return Fill(pattern, "%@", EnsureSessionName(root, index));
}

SessionCommandResult NewSession(PlistDict& root, const std::string& name) {
  if (auto refused = RefusedName(AskNameApply(root, name, std::nullopt))) return *refused;
  AddSession(1, name, root);
  return Selected(root, SessionCount(root) - 1, true);
}

SessionCommandResult DuplicateSession(PlistDict& root, std::int64_t index, const std::string& name) {
  if (IsAllSessions(root, index)) return Refused("Can't duplicate the \"All\" Session.");
  const PlistDict* original = GetSessionDict(root, index);
  if (original == nullptr) return Refused("There is no such session.");
  if (auto refused = RefusedName(AskNameApply(root, name, std::nullopt))) return *refused;
  PlistValue copy(*original);
  SetSessionName(copy, name);
  root.GetArray("sessionsArray")->push_back(std::move(copy));
  return Selected(root, SessionCount(root) - 1, true);
}

SessionCommandResult RenameSession(PlistDict& root, std::int64_t index, const std::string& name) {
  if (IsAllSessions(root, index)) return Refused("Can't rename the \"All\" Session.");
  if (GetSessionDict(root, index) == nullptr) return Refused("There is no such session.");
  const NameCheck check = AskNameApply(root, name, index);
  if (auto refused = RefusedName(check)) return *refused;
  if (check.verdict == NameVerdict::Unchanged) return Selected(root, index, false);
  SetSessionName((*root.GetArray("sessionsArray"))[static_cast<std::size_t>(index)], name);
  return Selected(root, index, true);
}

SessionCommandResult RemoveSession(PlistDict& root, std::int64_t index, bool allButFirst) {
  const std::int64_t count = SessionCount(root);
  if (count <= 1) return Refused("Can't remove the last Session.");
  if (IsAllSessions(root, index)) return Refused("Can't remove the \"All\" Session.");
  PlistArray& sessions = *root.GetArray("sessionsArray");
  std::int64_t selected = index;
  if (allButFirst) {
    sessions.resize(1);
    selected = 0;
  } else {
    if (index < 0 || index >= count) return Refused("There is no such session.");
    sessions.erase(sessions.begin() + index);
  }
  if (selected == SessionCount(root)) selected = SessionCount(root) - 1;
  return Selected(root, selected, true);
}

std::string RemoveConfirmationText(PlistDict& root, std::int64_t index, bool allButFirst) {
  if (allButFirst) return GLS("You are on the point to delete all the sessions but the first one.");
  return GLS("Are you sure you want to remove the current session") + " \"" + EnsureSessionName(root, index) +
         "\" " + GLS("definitively") + "?";
}

std::string SortSessions::ObjectValue(const std::string& columnIdentifier, std::int64_t row) const {
  if (row < 0 || row >= numberOfRowsInTableView()) return "";
  if (columnIdentifier == "progressive") return std::to_string(row + 1);
  return SessionNameOf(mSessions[static_cast<std::size_t>(row)]);
}

std::optional<PlistArray> SortSessions::ArrayFromIndexes(const std::vector<std::int64_t>& rows) const {
  PlistArray dragged;
  for (std::int64_t row : rows) {
    if (row >= 0 && row < numberOfRowsInTableView()) dragged.push_back(mSessions[static_cast<std::size_t>(row)]);
  }
  if (dragged.empty()) return std::nullopt;
  return dragged;
}

std::vector<std::int64_t> SortSessions::AcceptDrop(const PlistArray& dragged, std::int64_t row) {
  // The anchor is the first session at or after the drop row that is not itself moving, so a
  // drop onto a dragged row still lands where it was dropped.
  std::optional<PlistValue> anchor;
  for (std::int64_t i = std::max<std::int64_t>(row, 0); i < numberOfRowsInTableView() && !anchor; ++i) {
    const PlistValue& candidate = mSessions[static_cast<std::size_t>(i)];
    if (std::find(dragged.begin(), dragged.end(), candidate) == dragged.end()) anchor = candidate;
  }
  PlistArray moved;
  for (const PlistValue& session : dragged) {
    const auto found = std::find(mSessions.begin(), mSessions.end(), session);
    if (found == mSessions.end()) continue;
    moved.push_back(std::move(*found));
    mSessions.erase(found);
  }
  auto insertAt = anchor ? std::find(mSessions.begin(), mSessions.end(), *anchor) : mSessions.end();
  const std::int64_t first = insertAt - mSessions.begin();
  mSessions.insert(insertAt, moved.begin(), moved.end());
  std::vector<std::int64_t> rows;
  for (std::size_t i = 0; i < moved.size(); ++i) rows.push_back(first + static_cast<std::int64_t>(i));
  return rows;
}

std::optional<std::string> SortSessions::DeleteSelectedRows(const std::vector<std::int64_t>& rows) {
  std::vector<std::int64_t> selected;
  for (std::int64_t row : rows) {
    if (row >= 0 && row < numberOfRowsInTableView()) selected.push_back(row);
  }
  std::sort(selected.begin(), selected.end());
  selected.erase(std::unique(selected.begin(), selected.end()), selected.end());
  if (static_cast<std::int64_t>(selected.size()) == numberOfRowsInTableView()) {
    return GLS("Can't remove all the Sessions.");
  }
  for (auto it = selected.rbegin(); it != selected.rend(); ++it) mSessions.erase(mSessions.begin() + *it);
  return std::nullopt;
}

std::int64_t ApplySortedSessions(PlistDict& root, PlistArray sorted) {
  const std::int64_t index = root.GetInt("sessionIndex");
  const bool wasAll = IsAllSessions(root, index);
  const PlistDict* current = GetSessionDict(root, index);
  std::optional<PlistValue> remembered;
  if (current != nullptr) remembered = PlistValue(*current);
  root.Set("sessionsArray", std::move(sorted));
  const std::int64_t count = SessionCount(root);
  std::int64_t selected = count + 1;
  if (!wasAll) {
    const PlistArray& sessions = *root.GetArray("sessionsArray");
    const auto found = remembered ? std::find(sessions.begin(), sessions.end(), *remembered) : sessions.end();
    selected = std::min<std::int64_t>(found - sessions.begin(), count - 1);
  }
  root.Set("sessionIndex", selected);
  return selected;
}

std::string SessionNameOf(const PlistValue& session) {
  const PlistDict* dict = session.AsDict();
  const PlistDict* console = dict != nullptr ? dict->GetDict("consoleDict") : nullptr;
  return console != nullptr ? console->GetString("sessionName") : "";
}

std::optional<std::int64_t> FindSessionIndex(PlistDict& root, const std::string& name) {
  const std::int64_t count = SessionCount(root);
  for (std::int64_t i = 0; i < count; ++i) {
    if (EnsureSessionName(root, i) == name) return i;
  }
  if (name == GLS("All Sessions")) return count + 1;
  return std::nullopt;
}

}  // namespace marigold
