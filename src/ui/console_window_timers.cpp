// The console's timer button and the timers it stands for: planning follows the selection, runs
// that a timer starts end in the console like a run of the main button, and a lock held by another
// program is said plainly once.
#include <QLabel>
#include <QStackedWidget>
#include <QTimer>
#include <QToolButton>

#include "ui/action_icons.h"
#include "ui/alert_dialog.h"
#include "ui/console_timers.h"
#include "ui/console_window.h"
#include "util/strings_table.h"

namespace marigold {

void ConsoleWindow::UseClock(const Clock& clock) {
  mClock = &clock;
  if (mApp == nullptr || mRun == nullptr) return;
  mTimers = std::make_unique<ConsoleTimers>(*mRun, mApp->store(), clock);
  connect(mTimers.get(), &ConsoleTimers::changed, this, &ConsoleWindow::DrawTimerButton);
  connect(mTimers.get(), &ConsoleTimers::refused, this, &ConsoleWindow::TimersRefused);
  connect(mTimers.get(), &ConsoleTimers::runStarted, this, [this] {
    mLastOutcome.reset();
    mUserPressedStop = false;
    mTaskComment->clear();
    SetRunning(true);
  });
  connect(mTimers.get(), &ConsoleTimers::runEnded, this, &ConsoleWindow::RunConcluded);
  PlanTimers();
}

void ConsoleWindow::PlanTimers() {
  if (mApp == nullptr || mTimers == nullptr) return;
  mTimers->Follow(mApp->preferences().dict(), mPanels->currentWidget() == mConsole);
  DrawTimerButton();
}

void ConsoleWindow::DrawTimerButton() {
  if (mTimers == nullptr) return;
  const TimerButtonLook look = mTimers->Look();
  mTimerButton->setEnabled(look.enabled && mPanels->currentWidget() != mClosedPanel);
  mTimerButton->setIcon(TimerIcon(look.iconOn));
  mTimerButton->setToolTip(ToQ(look.toolTip));
}

void ConsoleWindow::GoPanelTimer() {
  // The timers of the selection are edited in their own place of the navigation.
  ShowPanel("timer");
}

void ConsoleWindow::TimersRefused(const QString& holder) {
  AlertRequest alert = WarningAlert(GLS("This window leaves its timers off: they are already fired by ") + FromQ(holder) +
                                    GLS(". Quit that program to let this window fire them."));
  alert.title = GLS("Timers are off");
  // Shown from the event loop: the refusal may come in the middle of opening a document.
  QTimer::singleShot(0, this, [this, alert] { ShowAlert(this, alert); });
}

void ConsoleWindow::OpenHandedOver(const std::string& path) {
  if (mApp == nullptr) return;
  show();
  raise();
  activateWindow();
  if (path.empty()) return;
  if (IsCopying()) {
    ShowAlert(this, WarningAlert(GLS("The document \"") + path + GLS("\" can be opened once the run has ended.")));
    return;
  }
  mApp->controller().OpenFile(path);
}

}  // namespace marigold
