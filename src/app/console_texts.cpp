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
