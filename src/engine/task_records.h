// The records a run leaves for its log: one per session ("sessionIndex", "logTaskArray", the
// session's active executive lists) and one per task, made when the task's scan ends and
// completed when it has been copied. Key names are the run log's; counters are integers.
#pragma once

#include <cstdint>

#include "engine/run_state.h"
#include "util/plist_value.h"

namespace marigold {

// The record of the task just scanned: "taskIndex", both roots, the four scanned counts,
// "gTotError", "gItemsToDo", "gConflictsSkipped", a copy of the detailed text and of
// restoreBackupDateArray.
PlistDict MakeTaskRecord(std::int64_t taskIndex, const RunState& state);
// Completes a task record after its copy: the eight copy counters of each side, the copy's
// errors added to "gTotError", the copy's detailed text appended.
void StoreCopyCounters(const RunState& state, PlistDict& record);
// Adds `text` and `errors` (lines and errors of a session's volumes and scripts) to the last
// record of `tasks`, then empties them; with no record they are dropped (the errors were handled
// when they happened).
void AddToLastTaskRecord(PlistArray& tasks, std::string& text, std::int64_t& errors);
// `total` += `add`, field by field.
void AddCopyCounters(SideCopyCounters& total, const SideCopyCounters& add);

}  // namespace marigold
