// A run from the main button to its end: the controller decides and runs it; the window shows
// its progress, its questions come through the desktop proxy, and the outcome says what follows.
#include <QApplication>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QLocale>
#include <QProgressBar>
#include <QToolButton>

#include "app/console_texts.h"
#include "ui/console_window.h"
#include "ui/desktop_proxy.h"
#include "ui/desktop_services.h"
#include "ui/log_window.h"
#include "util/strings_table.h"

namespace marigold {
namespace {

QString OutcomeSummary(const RunOutcome& outcome) {
  const SideCopyCounters& c = outcome.copyTotals;
  QStringList lines;
  if (outcome.ending == RunEnding::kStopped) lines << ToQ(GLS("Stopped"));
  lines << ToQ(GLS("Items copied:")) + QLatin1Char(' ') + QString::number(c.FilesCopied + c.FoldersCreated);
  lines << ToQ(GLS("Items replaced:")) + QLatin1Char(' ') + QString::number(c.FilesReplaced);
  lines << ToQ(GLS("Items deleted:")) + QLatin1Char(' ') +
               QString::number(c.FilesDeleted + c.FoldersDeleted + c.FilesTrashed + c.FoldersTrashed);
  lines << ToQ(GLS("Errors:")) + QLatin1Char(' ') + QString::number(outcome.errors);
  return lines.join(QLatin1Char('\n'));
}

}  // namespace

void ConsoleWindow::MainButtonPressed() {
  if (mApp == nullptr) return;
  if (mCountdown.isStartingSyncAndQuit()) {
    mCountdown.StopSyncAndQuit();
    mCountdownTimer.stop();
    mTaskComment->clear();
    SetRunning(false);
    return;
  }
  if (mRunning) {
    StopCopying(false);
    return;
  }
  StartRun(kExecutedByUser);
}

void ConsoleWindow::PrepareToExecuteSyncAndQuit() {
  mTaskComment->setText(ToQ(mCountdown.PrepareToExecuteSyncAndQuit(kExecutedBySyncAndQuit)));
  mCountdownTimer.start();
  ShowSession();
}

void ConsoleWindow::StartRun(int executedBy) {
  if (mApp == nullptr || mRun == nullptr) return;
  mUserPressedStop = false;
  mLastOutcome.reset();
  mTaskComment->clear();
  RunRequest request;
  request.sessionIndex = SelectedIndex();
  request.executedBy = executedBy;
  mProxy->SetPreviewExpanded(mApp->preferences().dict().GetInt("prefPreviewExpanded") != 0);
  SetRunning(true);
  const bool started = mRun->TaskExecuteSyncOrBackup(
      mApp->store().mainDict(), mApp->preferences().dict(), request, [this](const RunOutcome& outcome) {
        // Called on the worker (or here, when the run does not start): hand it to the GUI thread.
        QMetaObject::invokeMethod(this, [this, outcome] { RunConcluded(outcome); }, Qt::QueuedConnection);
      });
  if (!started) SetRunning(false);
}

void ConsoleWindow::RunConcluded(const RunOutcome& outcome) {
  mRun->Wait();
  mLastOutcome = outcome;
  SetRunning(false);
  DrawProgress();
  mProgress->setVisible(false);
  mBytes->clear();
  mBytes->setVisible(false);
  mLogText = outcome.logText;
  // An open log window follows the newest run.
  if (mLogWindow != nullptr && mLogWindow->isVisible() && !mLogText.empty()) mLogWindow->Fill("", mLogText);
  if (outcome.ending == RunEnding::kCouldNotStart && !outcome.couldNotStartReason.empty())
    ShowAlert(this, WarningAlert(outcome.couldNotStartReason));
  const bool ran = outcome.ending == RunEnding::kCompleted || outcome.ending == RunEnding::kStopped;
  if (ran) {
    mTaskComment->setText(OutcomeSummary(outcome));
    if (!isActiveWindow()) NotifyDesktop(ToQ(MainButtonTitle(mApp->store().mainDict(), SelectedIndex(), false)),
                                         OutcomeSummary(outcome));
  }
  emit runFinished();
  const bool quitAfterCountdown = mCountdown.ConcludeRun(outcome.Stopped() && mUserPressedStop);
  const bool quit = mQuitWhenStopped || quitAfterCountdown || outcome.afterRunAction == AfterRunAction::kQuit ||
                    outcome.afterRunAction == AfterRunAction::kTerminate || outcome.poweringOff;
  if (quit) {
    mApp->Quit();
    qApp->quit();
  }
}

void ConsoleWindow::SetRunning(bool running) {
  mRunning = running;
  mMainButton->setEnabled(true);
  mSessions->setEnabled(!running && !mCountdown.isStartingSyncAndQuit());
  if (running) {
    mProgress->setRange(0, 0);
    mProgress->setVisible(true);
  }
  ShowSession();
}

void ConsoleWindow::DrawProgress() {
  const ConsoleProgress progress = mProxy->TakeProgress();
  if (progress.itemsToDo >= 0) {
    mItemsToDo->setText(ToQ(GLS("Items to do:")) + QLatin1Char(' ') + QString::number(progress.itemsToDo));
    mItemsToDo->setVisible(true);
    if (!progress.indeterminate && progress.itemsTotal > 0) {
      mProgress->setRange(0, static_cast<int>(std::min<std::int64_t>(progress.itemsTotal, INT32_MAX)));
      mProgress->setValue(static_cast<int>(progress.itemsTotal - progress.itemsToDo));
    }
  }
  if (progress.indeterminate) mProgress->setRange(0, 0);
  mBytes->setVisible(mRunning && progress.bytesTotal > 0);
  if (progress.bytesTotal > 0) {
    const QLocale locale;
    mBytes->setText(locale.formattedDataSize(static_cast<qint64>(progress.bytesCopied)) + QStringLiteral(" / ") +
                    locale.formattedDataSize(static_cast<qint64>(progress.bytesTotal)));
  }
  if (!progress.taskComment.empty()) mTaskComment->setText(DisplayText(progress.taskComment));
  if (!progress.sideA.empty() && mRunning) {
    mSideA->setText(ToQ(progress.sideA));
    mSideB->setText(ToQ(progress.sideB));
  }
  if (progress.beep) QApplication::beep();
}

}  // namespace marigold
