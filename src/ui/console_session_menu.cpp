// The session pop-up's commands: the library decides and words every refusal and question; the
// window asks, shows and re-selects.
#include <QComboBox>

#include "app/session_management.h"
#include "model/document_model.h"
#include "ui/console_window.h"
#include "ui/name_sheet.h"
#include "ui/sort_sessions_sheet.h"
#include "util/strings_table.h"

namespace marigold {

void ConsoleWindow::ChooseSession(int chosen, bool altHeld) {
  if (mApp == nullptr) return;
  PlistDict& root = mApp->store().mainDict();
  const std::int64_t current = SelectedIndex();
  if (IsCopying() || chosen == current || !GetCurrentPanel()) {
    SelectIndex(current);
    return;
  }
  const std::int64_t count = SessionCount(root);
  if (count == 0) return;
  // No timer fires while a session command asks its questions.
  TimerSyncEnabled(false);

  SessionCommandResult result;
  result.ok = true;
  result.selectedIndex = current;
  auto askName = [&](std::optional<std::int64_t> renaming, const std::string& proposed) {
    NameSheet sheet(root, renaming, proposed, this);
    return sheet.Ask();
  };
  const std::int64_t fixed = chosen - count;
  const SessionMenuTag tag = chosen < count ? SessionMenuTag::Session
                             : fixed < static_cast<std::int64_t>(kFixedSessionMenuItems.size())
                                 ? kFixedSessionMenuItems[static_cast<std::size_t>(fixed)].tag
                                 : SessionMenuTag::None;
  switch (tag) {
    case SessionMenuTag::Session:
    case SessionMenuTag::AllSessions:
      root.Set("sessionIndex", tag == SessionMenuTag::Session ? std::int64_t{chosen} : count + 1);
      result.selectedIndex = root.GetInt("sessionIndex");
      break;
    case SessionMenuTag::New:
      if (auto name = askName(std::nullopt, ProposedNewSessionName(root))) result = NewSession(root, *name);
      break;
    case SessionMenuTag::Duplicate:
      if (IsAllSessions(root, current)) {
        result = DuplicateSession(root, current, "");
      } else if (auto name = askName(std::nullopt, ProposedDuplicateName(root, current))) {
        result = DuplicateSession(root, current, *name);
      }
      break;
    case SessionMenuTag::Rename:
      if (IsAllSessions(root, current)) {
        result = RenameSession(root, current, "");
      } else if (auto name = askName(current, EnsureSessionName(root, current))) {
        result = RenameSession(root, current, *name);
      }
      break;
    case SessionMenuTag::Remove: {
      // The refusals come first; only a removal that can happen is confirmed.
      PlistDict probe = root;
      SessionCommandResult check = RemoveSession(probe, current, altHeld);
      if (!check.ok) {
        result = check;
        break;
      }
      AlertRequest question;
      question.title = GLS("Warning:");
      question.text = RemoveConfirmationText(root, current, altHeld);
      question.buttons = {GLS("OK"), GLS("Cancel")};
      if (ShowAlert(this, question) == 0) result = RemoveSession(root, current, altHeld);
      break;
    }
    case SessionMenuTag::Sort: {
      const PlistArray* sessions = root.GetArray("sessionsArray");
      SortSessionsSheet sheet(sessions ? *sessions : PlistArray(), this);
      if (auto sorted = sheet.Ask()) {
        result.selectedIndex = ApplySortedSessions(root, std::move(*sorted));
        result.changed = true;
      }
      break;
    }
    case SessionMenuTag::None:
      break;
  }
  if (!result.ok) ShowAlert(this, WarningAlert(result.refusal));
  RebuildSessionMenu();
  ShowSession();
  PlanTimers();
}

}  // namespace marigold
