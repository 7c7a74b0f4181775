// The executions that the sessions' timer rows ask for over the next days, as new waiting entries.
#pragma once

#include <vector>

#include "scheduling/zoned_calendar.h"
#include "util/plist_value.h"

namespace marigold {

struct PlanningInput;

// The waiting entries of the horizon from `now` (today's occurrences not yet past, then every
// occurrence of the following days), sorted by moment. Rows that are off, never confirmed with a
// year before 2002, or repeating with no positive interval give nothing.
std::vector<PlistDict> PlanTimerEntries(const PlanningInput& input, const ZonedCalendar& calendar, PlistDate now);

// A new waiting entry for the session's execution at `moment`.
PlistDict NewTimerEntry(PlistDate moment, std::int64_t session, const std::string& sessionName);

}  // namespace marigold
