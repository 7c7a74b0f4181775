#include "ui/console_timers.h"

#include "platform/system_log.h"

namespace marigold {

ConsoleTimers::ConsoleTimers(RunController& runs, DocumentStore& store, const Clock& clock, QObject* parent)
    : QObject(parent), mStore(store),
      mScheduler(std::make_unique<TimerScheduler>(runs, store, clock, SyslogSystemLog())) {
  qRegisterMetaType<marigold::RunOutcome>("marigold::RunOutcome");
  mCheck.setInterval(static_cast<int>(kTimerCheckSeconds * 1000));
  connect(&mCheck, &QTimer::timeout, this, &ConsoleTimers::CheckNow);
  mScheduler->SetRunEndedCallback([this](const RunOutcome& outcome) {
    // On the worker: the console shows the end first, then the entry is completed.
    QMetaObject::invokeMethod(this, [this, outcome] {
      emit runEnded(outcome);
      CheckNow();
      if (!mWanted && !mScheduler->IsRunning()) mLock.Release();
    }, Qt::QueuedConnection);
  });
}

ConsoleTimers::~ConsoleTimers() { mScheduler.reset(); }

PlanningInput ConsoleTimers::Input() const {
  const PlistDict& document = mStore.mainDict();
  return PlanningInput{&document, document.GetInt("sessionIndex"), mPreferences.GetInt("prefSyncAndQuit") != 0,
                       1};
}

void ConsoleTimers::Follow(const PlistDict& preferences, bool consoleShown) {
  mPreferences = preferences;
  mScheduler->SetPreferences(preferences);
  const bool wanted = consoleShown && ConsoleRunsCheck(Input());
  mWanted = wanted;
  if (wanted && !mLock.held()) {
    if (!mLock.Acquire("marigold-gui")) {
      mHeldBy = mLock.HolderText();
      mCheck.stop();
      // Said once per holder, not at every change of session.
      if (mHeldBy != mReportedHolder) {
        mReportedHolder = mHeldBy;
        emit refused(QString::fromStdString(mHeldBy));
      }
      emit changed();
      return;
    }
  }
  mHeldBy.clear();
  // Planning with the timers off drops the waiting entries; the lock goes once no timer run is left.
  if (wanted || !mScheduler->schedule().executiveTimerArray().empty()) mScheduler->Replan();
  if (wanted) {
    mCheck.start();
  } else {
    mCheck.stop();
    if (!mScheduler->IsRunning()) mLock.Release();
  }
  emit changed();
}

bool ConsoleTimers::Pause() {
  const bool was = mCheck.isActive();
  mCheck.stop();
  return was;
}

void ConsoleTimers::CheckNow() {
  if (!mLock.held()) return;
  if (mScheduler->Tick()) emit runStarted();
  emit changed();
}

TimerButtonLook ConsoleTimers::Look() const {
  TimerButtonLook look = ConsoleTimerButton(Input(), mScheduler->schedule());
  if (!mHeldBy.empty()) {
    look.iconOn = false;
    look.toolTip = "Timers are off: they are fired by " + mHeldBy;
  }
  return look;
}

}  // namespace marigold
