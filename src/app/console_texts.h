// The texts of the console that follow from the document: the main button's title and the
// options a session has switched on, so that every front end words them alike.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "scheduling/timer_schedule.h"
#include "util/plist_value.h"

namespace marigold {

// "Stop" while a run is under way; otherwise "Synchronize" when the selected session (or, for
// "All Sessions", the first) synchronises, else "Backup".
std::string MainButtonTitle(const PlistDict& document, std::int64_t sessionIndex, bool running);

// The titles of the session's options that are on, in the console's order: "Timer",
// "Multiple", "Filters", "Exclusions". Empty for "All Sessions".
std::vector<std::string> OptionsOnTitles(const PlistDict& session);

// What the console's progress box says before a run: what the main button will do for the
// selection, or what is missing before it can.
std::string ConsoleIdleText(const PlistDict& document, std::int64_t sessionIndex);

// The console's timer button for the selection in `input`: off and disabled, "Temporary off
// because of the SyncAndQuit", while sync-and-quit is set; its icon on while the selection's timers
// are on; "Next Timer: ..." from `schedule` while one is planned, else "Go to the Timer panel".
struct TimerButtonLook {
  bool enabled = true;
  bool iconOn = false;
  std::string toolTip;
};
TimerButtonLook ConsoleTimerButton(const PlanningInput& input, const TimerSchedule& schedule);

}  // namespace marigold
