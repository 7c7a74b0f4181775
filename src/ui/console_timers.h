// The console's timers: while the selection's timers are on (and sync-and-quit is off) the window
// holds the per-user scheduler lock, the same one `marigold daemon` holds, and checks every
// kTimerCheckSeconds on the GUI thread whether an entry is due. A due entry runs unattended
// through the window's run controller; its end is handed back to the GUI thread.
#pragma once

#include <QObject>
#include <QTimer>
#include <memory>
#include <string>

#include "app/console_texts.h"
#include "app/scheduler_lock.h"
#include "app/timer_scheduler.h"

namespace marigold {

class ConsoleTimers : public QObject {
  Q_OBJECT
 public:
  // `runs`, `store` and `clock` must outlive the timers.
  ConsoleTimers(RunController& runs, DocumentStore& store, const Clock& clock, QObject* parent = nullptr);
  // A timer run still under way is stopped and waited for.
  ~ConsoleTimers() override;

  // Plans again for the document's selection and switches the check on or off, as the console
  // shows it (`consoleShown`) with `preferences`. While another program holds the lock the
  // check stays off and `refused` is emitted once for that holder.
  void Follow(const PlistDict& preferences, bool consoleShown);
  // Stops the check (a half-loaded document, a modal session command); returns whether it ran.
  // The lock stays held: the next Follow decides.
  bool Pause();
  bool checking() const { return mCheck.isActive(); }
  // Who fires the timers instead of this window ("" when nobody does).
  const std::string& heldBy() const { return mHeldBy; }
  TimerButtonLook Look() const;
  // One check, as the timer makes it every kTimerCheckSeconds: completes an ended timer run and
  // starts the run of a due entry.
  void CheckNow();
  TimerScheduler& scheduler() { return *mScheduler; }

 signals:
  void runStarted();
  void runEnded(const marigold::RunOutcome& outcome);
  void refused(const QString& holder);
  // The button's look may have changed (planning, a check, a finished run).
  void changed();

 private:
  PlanningInput Input() const;

  DocumentStore& mStore;
  PlistDict mPreferences;
  SchedulerLock mLock;
  std::string mHeldBy;
  std::string mReportedHolder;
  bool mWanted = false;  // the selection's timers are on and the console shows
  QTimer mCheck;
  std::unique_ptr<TimerScheduler> mScheduler;  // last: its timer run ends before the rest goes
};

}  // namespace marigold
