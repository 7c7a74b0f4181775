// The main window: the session pop-up and the main button in the toolbar, the console (side A and
// side B, the task, the progress of a run) and the document commands in the menus. It is the
// desktop's DocumentHost: the library's document controller drives its title, panels and menus.
// Session commands, documents and runs each live in their own source file.
#pragma once

#include <QMainWindow>
#include <QPointer>
#include <QTimer>
#include <memory>
#include <optional>
#include <string>

#include "app/document_controller.h"
#include "app/main_app.h"
#include "app/run_controller.h"
#include "engine/sync_and_quit.h"
#include "platform/clock.h"
#include "ui/alert_dialog.h"

class QAction;
class QButtonGroup;
class QCheckBox;
class QComboBox;
class QLabel;
class QLineEdit;
class QListWidget;
class QMenu;
class QProgressBar;
class QRadioButton;
class QStackedWidget;
class QToolButton;

namespace marigold {

class ConsoleTimers;
class DesktopProxy;
class LogWindow;
class LinuxFileSystem;

class ConsoleWindow : public QMainWindow, public DocumentHost {
  Q_OBJECT
 public:
  // Runs read and write through `fs` (the system's when null), which must outlive the window.
  explicit ConsoleWindow(FileSystem* fs = nullptr);
  ~ConsoleWindow() override;

  // The prompts the application object must use, so that its questions open over this window.
  DesktopPrompts& prompts() { return mPrompts; }
  // Connects the launched application; call once, before the window is shown.
  void Attach(MainApp& app);

  // DocumentHost
  bool IsCopying() const override;
  void StopCopying(bool quitWhenStopped) override;
  bool GetCurrentPanel() override { return true; }
  bool TimerSyncEnabled(bool enabled) override;
  void SetDocumentSessions() override;
  std::string WindowTitle() const override;
  void SetWindowTitle(const std::string& title) override;
  void SetRepresentedFile(const std::string& path) override;
  void ShowMainWindow() override;
  void ShowPanel(const std::string& identifier) override;
  void NoteRecentDocument(const std::string& path) override;
  void ClearTaskComment() override;
  void ResetLogText() override;
  void Beep() override;

  // The session pop-up's action for the item at `index`; `altHeld` as for the remove command.
  void ChooseSession(int index, bool altHeld);
  // The main button: starts a run of the selected session, or stops the run under way, or
  // cancels the sync-and-quit countdown.
  void MainButtonPressed();
  // Starts the sync-and-quit countdown of the launch.
  void PrepareToExecuteSyncAndQuit();
  // The application asks to quit (menu, window closed): true when it quits now.
  bool RequestQuit();
  // Sets a side's folder of the selected session (a choose button, a drop from the file manager).
  void SetSideFolder(bool sideA, const std::string& path);
  // Plans the timers again for the selection and switches their check on or off (a document
  // opened, a session chosen, the preferences changed).
  void PlanTimers();
  // The timers plan and fire on `clock` from now on (the system's until then); it must outlive
  // the window.
  void UseClock(const Clock& clock);
  // Opens `path` as the File menu's Open does (its questions included) and brings the window to
  // the front ("" only brings it forward): a document handed over by a second start of the program.
  void OpenHandedOver(const std::string& path);

  QComboBox* sessionPopUp() const { return mSessions; }
  QToolButton* mainButton() const { return mMainButton; }
  QToolButton* timerButton() const { return mTimerButton; }
  ConsoleTimers* timers() const { return mTimers.get(); }
  const std::optional<RunOutcome>& lastOutcome() const { return mLastOutcome; }
  RunController* runController() const { return mRun.get(); }
  // The log window, opened on the last run's log (or brought to the front).
  LogWindow* OpenLogWindow();

 signals:
  // The run started by the main button handed over its outcome (GUI thread).
  void runFinished();

 protected:
  void closeEvent(QCloseEvent* event) override;
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  void BuildMenus();
  QWidget* BuildConsole();
  void RebuildSessionMenu();
  // Shows the selected session's folders, task and options, and the button's title.
  void ShowSession();
  PlistDict* CurrentSession();
  std::int64_t SelectedIndex() const;
  void SelectIndex(std::int64_t index);
  void SetTask(std::int64_t task, std::optional<bool> exact);
  void ChooseFolder(bool sideA);
  void UpdateRecentMenu();
  void OpenPreferences();
  void ShowLogWindow();
  // Runs
  void StartRun(int executedBy);
  void RunConcluded(const RunOutcome& outcome);
  void DrawProgress();
  void SetRunning(bool running);
  // Timers
  void DrawTimerButton();
  void GoPanelTimer();
  void TimersRefused(const QString& holder);

  DesktopPrompts mPrompts;
  MainApp* mApp = nullptr;
  DesktopProxy* mProxy = nullptr;
  std::unique_ptr<LinuxFileSystem> mOwnFs;
  FileSystem* mFs = nullptr;
  std::unique_ptr<RunController> mRun;
  const Clock* mClock = nullptr;
  std::unique_ptr<ConsoleTimers> mTimers;  // after mRun: a timer run ends before its controller goes
  SyncAndQuitCountdown mCountdown;
  QTimer mCountdownTimer;
  bool mRunning = false;
  bool mQuitWhenStopped = false;
  bool mUserPressedStop = false;
  std::optional<RunOutcome> mLastOutcome;
  std::string mLogText;

  QComboBox* mSessions = nullptr;
  QToolButton* mMainButton = nullptr;
  QAction* mMainAction = nullptr;
  QToolButton* mTimerButton = nullptr;
  QListWidget* mNavigation = nullptr;
  QStackedWidget* mPanels = nullptr;
  QWidget* mConsole = nullptr;
  QWidget* mClosedPanel = nullptr;
  QLineEdit* mSideA = nullptr;
  QLineEdit* mSideB = nullptr;
  QRadioButton* mSyncRadio = nullptr;
  QRadioButton* mBackupRadio = nullptr;
  QCheckBox* mExact = nullptr;
  QLabel* mOptionsOn = nullptr;
  QLabel* mItemsToDo = nullptr;
  QProgressBar* mProgress = nullptr;
  QLabel* mBytes = nullptr;
  QLabel* mTaskComment = nullptr;
  QLabel* mLastExact = nullptr;
  QMenu* mRecentMenu = nullptr;
  QPointer<LogWindow> mLogWindow;
  QStringList mRecent;
};

}  // namespace marigold
