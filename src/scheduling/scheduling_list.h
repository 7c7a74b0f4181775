// The scheduling list as a model that a window (or the terminal) shows: the planned, running and
// finished timer executions with their session, state and errors, the planning horizon, and the
// deletion of finished rows. The list itself belongs to the timer schedule; this model reads it and
// edits it only through DeleteTimerRow. One thread (the one that fires timers) uses it.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "scheduling/zoned_calendar.h"
#include "util/alert_request.h"
#include "util/plist_value.h"

namespace marigold {

enum class SchedulingColumn { kProgressive, kStartDate, kSessionName, kState, kErrors, kNextExe };
enum class TimerTextColour { kBlack, kRed, kGrey };

struct TimerRowDeletion {
  bool deleted = false;
  std::optional<AlertRequest> alert;  // the refusal to show, when a selected row is not done
  std::int64_t selectRow = -1;        // the row to select afterwards
};

class SchedulingList {
 public:
  // `calendar` formats the moments; it must outlive the list.
  explicit SchedulingList(const ZonedCalendar& calendar) : mCalendar(calendar) {}

  // The planning horizon in days, at least 1.
  int GetHowManyDays() const { return mHowManyDaysPreview; }
  // Item `item` of the horizon pop-up means item + 1 days. True when the horizon changed and the
  // caller must re-plan; false (and no change) while blocked.
  bool ChoosePopMenu(int item);
  // Shows this list (owned by the caller, which keeps it alive while shown); nullptr shows none.
  void SetArray(PlistArray* entries) { mEntries = entries; }
  // Set while a timer run is going on: the horizon and deletion are locked.
  void SetBlocked(bool blocked) { mBlocked = blocked; }
  bool blocked() const { return mBlocked; }

  std::size_t RowCount() const { return mEntries ? mEntries->size() : 0; }
  // The cell's text; the next-execution column is "" (it shows an icon, see ShowsNextMark).
  std::string Text(std::size_t row, SchedulingColumn column) const;
  bool ShowsNextMark(std::size_t row) const;
  TimerTextColour Colour(std::size_t row) const;
  // The log file of a finished run, when it names an existing regular file.
  std::optional<std::string> LogToOpen(std::size_t row) const;
  // Deletes the selected rows when every one of them is done; any other state refuses them all.
  TimerRowDeletion DeleteTimerRow(const std::vector<std::size_t>& selected);

 private:
  const PlistDict* Entry(std::size_t row) const;

  const ZonedCalendar& mCalendar;
  PlistArray* mEntries = nullptr;
  int mHowManyDaysPreview = 1;
  bool mBlocked = false;
};

}  // namespace marigold
