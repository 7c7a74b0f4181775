#include "scheduling/scheduling_list.h"

#include <sys/stat.h>
#include <syslog.h>

#include <algorithm>

#include "platform/system_log.h"
#include "scheduling/timer_schedule.h"
#include "util/strings_table.h"

namespace marigold {

bool SchedulingList::ChoosePopMenu(int item) {
  if (mBlocked || item < 0) return false;
  mHowManyDaysPreview = item + 1;
  return true;
}

const PlistDict* SchedulingList::Entry(std::size_t row) const {
  return mEntries && row < mEntries->size() ? (*mEntries)[row].AsDict() : nullptr;
}

std::string SchedulingList::Text(std::size_t row, SchedulingColumn column) const {
  const PlistDict* entry = Entry(row);
  if (entry == nullptr) return "";
  const std::int64_t state = entry->GetInt("state");
  switch (column) {
    case SchedulingColumn::kProgressive:
      return std::to_string(row + 1);
    case SchedulingColumn::kStartDate:
      // The 12-hour hour field without a marker is what the list has always shown.
      return mCalendar.Format(entry->GetDate("startDate").value_or(PlistDate{}), "yyyy.MM.dd, hh:mm - EEEE");
    case SchedulingColumn::kSessionName:
      return entry->GetString("sessionName");
    case SchedulingColumn::kState:
      return GLS(state == kTimerWaiting ? "Wait" : state == kTimerRunning ? "Run" : state == kTimerSkipped ? "Skipped" : "Done");
    case SchedulingColumn::kErrors:
      return state == kTimerDone ? std::to_string(entry->GetInt("errors")) : "";
    case SchedulingColumn::kNextExe:
      return "";
  }
  return "";
}

bool SchedulingList::ShowsNextMark(std::size_t row) const {
  const PlistDict* entry = Entry(row);
  return entry && entry->GetInt("nextExe") == 1;
}

TimerTextColour SchedulingList::Colour(std::size_t row) const {
  const PlistDict* entry = Entry(row);
  const std::int64_t state = entry ? entry->GetInt("state") : std::int64_t{kTimerWaiting};
  if (state == kTimerRunning) return TimerTextColour::kRed;
  if (state == kTimerDone || state == kTimerSkipped) return TimerTextColour::kGrey;
  return TimerTextColour::kBlack;
}

std::optional<std::string> SchedulingList::LogToOpen(std::size_t row) const {
  const PlistDict* entry = Entry(row);
  const std::string path = entry ? entry->GetString("pathLogFile") : "";
  struct stat st {};
  if (path.empty() || ::stat(path.c_str(), &st) != 0 || !S_ISREG(st.st_mode)) return std::nullopt;
  return path;
}

TimerRowDeletion SchedulingList::DeleteTimerRow(const std::vector<std::size_t>& selected) {
  TimerRowDeletion result;
  if (mBlocked || RowCount() == 0 || selected.empty()) return result;
  std::vector<std::size_t> rows = selected;
  std::sort(rows.begin(), rows.end());
  rows.erase(std::unique(rows.begin(), rows.end()), rows.end());
  if (rows.back() >= RowCount()) return result;
  SyslogSystemLog().Write(LOG_INFO, "Going to delete row " + std::to_string(rows.back()));
  for (auto it = rows.rbegin(); it != rows.rend(); ++it) {
    // Running and skipped rows are refused as well: only a finished run's row may go.
    if (Entry(*it)->GetInt("state") != kTimerDone) {
      result.alert = AlertRequest{AlertRequest::Style::Warning, "", GLS("Can't delete waiting timers"),
                                  GLS("You can delete the timers already done only. You can't delete timers in waiting state."),
                                  {GLS("OK")}};
      return result;
    }
  }
  bool removedNext = false;
  for (auto it = rows.rbegin(); it != rows.rend(); ++it) {
    removedNext = removedNext || Entry(*it)->GetInt("nextExe") == 1;
    mEntries->erase(mEntries->begin() + static_cast<std::ptrdiff_t>(*it));
  }
  if (removedNext) {
    for (PlistValue& value : *mEntries) {
      if (PlistDict* entry = value.AsDict(); entry && entry->GetInt("state") == kTimerWaiting) {
        entry->Set("nextExe", 1);
        break;
      }
    }
  }
  result.deleted = true;
  // The position of the last removed index, as the list has always selected after a deletion.
  result.selectRow = static_cast<std::int64_t>(rows.front());
  return result;
}

}  // namespace marigold
