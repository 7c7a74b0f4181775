#include "app/console_texts.h"

#include "model/document_model.h"
#include "options/session_switches.h"
#include "util/strings_table.h"

namespace marigold {

std::string MainButtonTitle(const PlistDict& document, std::int64_t sessionIndex, bool running) {
  if (running) return GLS("Stop");
  const PlistDict* session = GetSessionDict(document, IsAllSessions(document, sessionIndex) ? 0 : sessionIndex);
  SessionSwitches switches;
  if (session != nullptr) ReadTaskSettings(*session, switches);
  return GLS(switches.gIsSyncOn ? "Synchronize" : "Backup");
}

std::vector<std::string> OptionsOnTitles(const PlistDict& session) {
  SessionSwitches switches;
  ReadSessionSwitches(session, switches);
  std::vector<std::string> titles;
  if (switches.gIsTimerOn) titles.push_back(GLS("Timer"));
  if (switches.gIsMultiOn) titles.push_back(GLS("Multiple"));
  if (switches.gIsFilterOn) titles.push_back(GLS("Filters"));
  if (switches.gIsExcludeOn) titles.push_back(GLS("Exclusions"));
  return titles;
}

std::string ConsoleIdleText(const PlistDict& document, std::int64_t sessionIndex) {
  if (IsAllSessions(document, sessionIndex)) {
    return MainButtonTitle(document, sessionIndex, false) + GLS(" runs every session of the document, one after the other.");
  }
  const PlistDict* session = GetSessionDict(document, sessionIndex);
  if (session == nullptr) return {};
  const PlistDict* console = session->GetDict("consoleDict");
  if (console == nullptr || console->GetString("topFolder").empty() || console->GetString("bottomFolder").empty())
    return GLS("Choose the folders of side A and side B, or drop them on their fields.");
  SessionSwitches switches;
  ReadTaskSettings(*session, switches);
  std::string text;
  if (switches.gIsSyncOn) {
    text = GLS(switches.gIsExactOn ? "Synchronize exactly: what changed on either side, deletions included, is carried to the other."
                                   : "Synchronize: what is new or newer on either side is copied to the other.");
  } else {
    text = GLS(switches.gIsExactOn ? "Backup exactly: side B becomes like side A; what is only on side B is removed."
                                   : "Backup: what is new or newer on side A is copied to side B.");
  }
  if (switches.gIsExactOn && switches.gIsMoveToTrash) text += "\r" + GLS("Removed items go to the trash.");
  return text;
}

TimerButtonLook ConsoleTimerButton(const PlanningInput& input, const TimerSchedule& schedule) {
  TimerButtonLook look;
  if (input.syncAndQuit) {
    look.enabled = false;
    look.toolTip = GLS("Temporary off because of the SyncAndQuit");
    return look;
  }
  look.iconOn = ConsoleRunsCheck(input);
  bool planned = false;
  for (const PlistValue& entry : schedule.executiveTimerArray()) {
    const PlistDict* dict = entry.AsDict();
    if (dict && dict->GetInt("nextExe") == 1 && dict->GetInt("state") == kTimerWaiting) planned = true;
  }
  look.toolTip = look.iconOn && planned && !schedule.toolTip().empty() ? schedule.toolTip() : GLS("Go to the Timer panel");
  return look;
}

}  // namespace marigold
