#include "ui/console_window.h"

#include <QApplication>
#include <QButtonGroup>
#include <QCheckBox>
#include <QCloseEvent>
#include <QComboBox>
#include <QDir>
#include <QDragEnterEvent>
#include <QFileDialog>
#include <QFormLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMenuBar>
#include <QMimeData>
#include <QProgressBar>
#include <QPushButton>
#include <QRadioButton>
#include <QSettings>
#include <QStackedWidget>
#include <QStyle>
#include <QToolBar>
#include <QToolButton>
#include <QVBoxLayout>
#include <chrono>

#include "app/console_texts.h"
#include "app/session_management.h"
#include "engine/exact_index_console.h"
#include "model/document_model.h"
#include "platform/linux_file_system.h"
#include "ui/action_icons.h"
#include "ui/console_timers.h"
#include "ui/desktop_proxy.h"
#include "ui/log_window.h"
#include "ui/preferences_window.h"
#include "util/strings_table.h"

namespace marigold {
namespace {

double SteadySeconds() {
  using namespace std::chrono;
  return duration<double>(steady_clock::now().time_since_epoch()).count();
}

// The first local folder among the dropped items.
std::optional<std::string> DroppedFolder(const QMimeData* data) {
  if (data == nullptr || !data->hasUrls()) return std::nullopt;
  for (const QUrl& url : data->urls()) {
    if (url.isLocalFile() && QFileInfo(url.toLocalFile()).isDir()) return FromQ(url.toLocalFile());
  }
  return std::nullopt;
}

}  // namespace

ConsoleWindow::ConsoleWindow(FileSystem* fs) : mPrompts(this), mCountdown(SteadySeconds) {
  setObjectName(QStringLiteral("ConsoleWindow"));
  setWindowIcon(QIcon::fromTheme(QStringLiteral("marigold")));
  mProxy = new DesktopProxy(this);
  connect(mProxy, &DesktopProxy::progressChanged, this, &ConsoleWindow::DrawProgress);
  if (fs == nullptr) {
    mOwnFs = std::make_unique<LinuxFileSystem>();
    fs = mOwnFs.get();
  }
  mFs = fs;

  auto* toolbar = addToolBar(ToQ(GLS("Console")));
  toolbar->setObjectName(QStringLiteral("ConsoleToolbar"));
  toolbar->setMovable(false);
  mSessions = new QComboBox(toolbar);
  mSessions->setObjectName(QStringLiteral("sessions"));
  mSessions->setMinimumWidth(220);
  mSessions->setSizeAdjustPolicy(QComboBox::AdjustToContents);
  connect(mSessions, &QComboBox::activated, this,
          [this](int index) { ChooseSession(index, QApplication::keyboardModifiers() & Qt::AltModifier); });
  toolbar->addWidget(mSessions);
  auto* spacer = new QWidget(toolbar);
  spacer->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Preferred);
  toolbar->addWidget(spacer);
  mTimerButton = new QToolButton(toolbar);
  mTimerButton->setObjectName(QStringLiteral("timerButton"));
  mTimerButton->setIcon(TimerIcon(false));
  mTimerButton->setToolTip(ToQ(GLS("Go to the Timer panel")));
  connect(mTimerButton, &QToolButton::clicked, this, &ConsoleWindow::GoPanelTimer);
  toolbar->addWidget(mTimerButton);
  mMainButton = new QToolButton(toolbar);
  mMainButton->setObjectName(QStringLiteral("mainButton"));
  mMainButton->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
  mMainButton->setIcon(style()->standardIcon(QStyle::SP_BrowserReload));
  mMainButton->setMinimumWidth(130);
  connect(mMainButton, &QToolButton::clicked, this, &ConsoleWindow::MainButtonPressed);
  toolbar->addWidget(mMainButton);

  // The option panels take their places in this list and stack beside the console.
  auto* central = new QWidget(this);
  auto* row = new QHBoxLayout(central);
  mNavigation = new QListWidget(central);
  mNavigation->setObjectName(QStringLiteral("panels"));
  // Each place carries the identifier ShowPanel knows it by.
  auto* consoleItem = new QListWidgetItem(ToQ(GLS("Console")), mNavigation);
  consoleItem->setData(Qt::UserRole, QStringLiteral("console"));
  mNavigation->setMaximumWidth(130);
  mNavigation->setCurrentRow(0);
  row->addWidget(mNavigation);
  mPanels = new QStackedWidget(central);
  mConsole = BuildConsole();
  mPanels->addWidget(mConsole);
  mClosedPanel = new QLabel(ToQ(GLS("No document is open.")), mPanels);
  static_cast<QLabel*>(mClosedPanel)->setAlignment(Qt::AlignCenter);
  mPanels->addWidget(mClosedPanel);
  connect(mNavigation, &QListWidget::currentRowChanged, mPanels, &QStackedWidget::setCurrentIndex);
  row->addWidget(mPanels, 1);
  setCentralWidget(central);
  BuildMenus();

  mCountdownTimer.setInterval(1000);
  connect(&mCountdownTimer, &QTimer::timeout, this, [this] {
    const SyncAndQuitCountdown::Tick tick = mCountdown.ExecuteSyncAndQuit();
    if (!tick.startRun) {
      if (!tick.text.empty()) mTaskComment->setText(ToQ(tick.text));
      return;
    }
    mCountdownTimer.stop();
    StartRun(kExecutedBySyncAndQuit);
  });
  resize(720, 460);
}

ConsoleWindow::~ConsoleWindow() {
  // A run still under way is asked to stop and gets no more questions; the controller then
  // waits for it to wind down.
  mProxy->Detach();
  if (mRun) mRun->Stop();
}

void ConsoleWindow::Attach(MainApp& app) {
  mApp = &app;
  mRun = std::make_unique<RunController>(app.paths(), *mFs, *mProxy);
  UseClock(mClock != nullptr ? *mClock : SystemClock());
  QSettings settings;
  mRecent = settings.value(QStringLiteral("recentDocuments")).toStringList();
  UpdateRecentMenu();
  SetDocumentSessions();
}

QWidget* ConsoleWindow::BuildConsole() {
  auto* panel = new QWidget(this);
  auto* layout = new QVBoxLayout(panel);

  auto* folders = new QGroupBox(ToQ(GLS("Folders")), panel);
  auto* form = new QFormLayout(folders);
  for (bool sideA : {true, false}) {
    auto* field = new QLineEdit(folders);
    field->setObjectName(sideA ? QStringLiteral("sideA") : QStringLiteral("sideB"));
    field->setReadOnly(true);
    field->setAcceptDrops(true);
    field->setPlaceholderText(ToQ(GLS("Choose a folder, or drop one here")));
    field->installEventFilter(this);
    auto* choose = new QPushButton(ToQ(GLS("Choose…")), folders);
    connect(choose, &QPushButton::clicked, this, [this, sideA] { ChooseFolder(sideA); });
    auto* line = new QHBoxLayout;
    line->addWidget(field, 1);
    line->addWidget(choose);
    form->addRow(ToQ(GLS(sideA ? "Side A:" : "Side B:")), line);
    (sideA ? mSideA : mSideB) = field;
  }
  layout->addWidget(folders);

  auto* task = new QGroupBox(ToQ(GLS("Task")), panel);
  auto* taskRow = new QHBoxLayout(task);
  mSyncRadio = new QRadioButton(ToQ(GLS("Synchronize")), task);
  mBackupRadio = new QRadioButton(ToQ(GLS("Backup")), task);
  mExact = new QCheckBox(ToQ(GLS("Exact")), task);
  mExact->setToolTip(ToQ(GLS("Make side B exactly like side A (backup), or keep both sides exactly alike (synchronize)")));
  auto* group = new QButtonGroup(task);
  group->addButton(mSyncRadio, 1);
  group->addButton(mBackupRadio, 2);
  connect(group, &QButtonGroup::idClicked, this, [this](int id) { SetTask(id, std::nullopt); });
  connect(mExact, &QCheckBox::clicked, this, [this](bool on) { SetTask(0, on); });
  taskRow->addWidget(mSyncRadio);
  taskRow->addWidget(mBackupRadio);
  taskRow->addSpacing(24);
  taskRow->addWidget(mExact);
  taskRow->addStretch(1);
  mOptionsOn = new QLabel(task);
  mOptionsOn->setObjectName(QStringLiteral("optionsOn"));
  taskRow->addWidget(mOptionsOn);
  layout->addWidget(task);

  auto* status = new QGroupBox(ToQ(GLS("Progress")), panel);
  auto* statusLayout = new QVBoxLayout(status);
  mItemsToDo = new QLabel(status);
  mItemsToDo->setVisible(false);  // until a run counts its items
  mProgress = new QProgressBar(status);
  mProgress->setTextVisible(false);
  mProgress->setVisible(false);
  mBytes = new QLabel(status);
  mBytes->setObjectName(QStringLiteral("bytes"));
  mBytes->setVisible(false);
  mTaskComment = new QLabel(status);
  mTaskComment->setObjectName(QStringLiteral("taskComment"));
  mTaskComment->setWordWrap(true);
  mLastExact = new QLabel(status);
  mLastExact->setObjectName(QStringLiteral("lastExact"));
  for (QWidget* widget : {static_cast<QWidget*>(mItemsToDo), static_cast<QWidget*>(mProgress),
                          static_cast<QWidget*>(mBytes), static_cast<QWidget*>(mTaskComment),
                          static_cast<QWidget*>(mLastExact)})
    statusLayout->addWidget(widget);
  layout->addWidget(status);
  layout->addStretch(1);
  return panel;
}

void ConsoleWindow::BuildMenus() {
  QMenu* file = menuBar()->addMenu(ToQ(GLS("&File")));
  auto add = [this](QMenu* menu, const char* title, QKeySequence keys, auto slot) {
    QAction* action = menu->addAction(ToQ(GLS(title)));
    action->setShortcut(keys);
    connect(action, &QAction::triggered, this, slot);
    return action;
  };
  add(file, "New", QKeySequence::New, [this] { if (mApp) mApp->controller().FileNew(); });
  add(file, "Open…", QKeySequence::Open, [this] { if (mApp) mApp->controller().FileOpen(); });
  mRecentMenu = file->addMenu(ToQ(GLS("Open Recent")));
  file->addSeparator();
  add(file, "Save", QKeySequence::Save, [this] { if (mApp) mApp->controller().SaveAFile(); });
  add(file, "Save As…", QKeySequence::SaveAs, [this] { if (mApp) mApp->controller().FileSaveAs(); });
  add(file, "Close", QKeySequence::Close, [this] { if (mApp) mApp->controller().DoFileClose(false); });
  file->addSeparator();
  add(file, "Quit", QKeySequence::Quit, [this] { if (RequestQuit()) qApp->quit(); });
  QMenu* edit = menuBar()->addMenu(ToQ(GLS("&Edit")));
  add(edit, "Preferences…", QKeySequence::Preferences, [this] { OpenPreferences(); });
  QMenu* run = menuBar()->addMenu(ToQ(GLS("&Run")));
  mMainAction = add(run, "Synchronize", QKeySequence(Qt::CTRL | Qt::Key_R), [this] { MainButtonPressed(); });
  run->addSeparator();
  add(run, "Log Window", QKeySequence(Qt::CTRL | Qt::Key_L), [this] { OpenLogWindow(); });
}

void ConsoleWindow::UpdateRecentMenu() {
  mRecentMenu->clear();
  for (const QString& path : mRecent) {
    QAction* action = mRecentMenu->addAction(QFileInfo(path).fileName());
    action->setToolTip(path);
    connect(action, &QAction::triggered, this, [this, path] {
      if (mApp && !IsCopying()) mApp->controller().OpenFile(FromQ(path));
    });
  }
  mRecentMenu->setEnabled(!mRecent.isEmpty());
}

void ConsoleWindow::OpenPreferences() {
  if (mApp == nullptr) return;
  PreferencesWindow window(mApp->preferences(), mApp->identities().isRoot, this);
  window.exec();
  // Sync-and-quit keeps every timer off.
  PlanTimers();
}

LogWindow* ConsoleWindow::OpenLogWindow() {
  if (mLogWindow == nullptr) {
    mLogWindow = new LogWindow(*mFs, this);
    mLogWindow->setAttribute(Qt::WA_DeleteOnClose);
  }
  mLogWindow->Fill("", mLogText);
  mLogWindow->show();
  mLogWindow->raise();
  return mLogWindow;
}

bool ConsoleWindow::eventFilter(QObject* watched, QEvent* event) {
  const bool sideA = watched == mSideA;
  if (watched != mSideA && watched != mSideB) return QMainWindow::eventFilter(watched, event);
  if (event->type() == QEvent::DragEnter || event->type() == QEvent::DragMove) {
    auto* drag = static_cast<QDropEvent*>(event);
    if (!IsCopying() && DroppedFolder(drag->mimeData())) {
      drag->acceptProposedAction();
      return true;
    }
  } else if (event->type() == QEvent::Drop) {
    auto* drop = static_cast<QDropEvent*>(event);
    if (auto folder = DroppedFolder(drop->mimeData()); folder && !IsCopying()) {
      SetSideFolder(sideA, *folder);
      drop->acceptProposedAction();
      return true;
    }
  }
  return QMainWindow::eventFilter(watched, event);
}

void ConsoleWindow::ChooseFolder(bool sideA) {
  const QString start = (sideA ? mSideA : mSideB)->text();
  const QString folder = QFileDialog::getExistingDirectory(this, ToQ(GLS(sideA ? "Side A:" : "Side B:")),
                                                           start.isEmpty() ? QDir::homePath() : start);
  if (!folder.isEmpty()) SetSideFolder(sideA, FromQ(folder));
}

void ConsoleWindow::SetSideFolder(bool sideA, const std::string& path) {
  PlistDict* session = CurrentSession();
  if (session == nullptr || IsCopying()) return;
  PlistDict* console = session->GetDict("consoleDict");
  if (console == nullptr) return;
  console->Set(sideA ? "topFolder" : "bottomFolder", path);
  ShowSession();
}

void ConsoleWindow::SetTask(std::int64_t task, std::optional<bool> exact) {
  PlistDict* session = CurrentSession();
  PlistDict* settings = session ? session->GetDict("settingsDict") : nullptr;
  if (settings == nullptr || IsCopying()) {
    ShowSession();
    return;
  }
  if (task != 0) settings->Set("settTask", task);
  if (exact) settings->Set("settExact", *exact ? 1 : 0);
  ShowSession();
}

PlistDict* ConsoleWindow::CurrentSession() {
  if (mApp == nullptr) return nullptr;
  return GetSessionDict(mApp->store().mainDict(), SelectedIndex());
}

std::int64_t ConsoleWindow::SelectedIndex() const {
  return mApp ? mApp->store().mainDict().GetInt("sessionIndex") : 0;
}

void ConsoleWindow::SelectIndex(std::int64_t index) {
  QSignalBlocker block(mSessions);
  mSessions->setCurrentIndex(static_cast<int>(index));
}

void ConsoleWindow::SetDocumentSessions() {
  RebuildSessionMenu();
  ShowSession();
  ShowPanel("console");
  PlanTimers();
}

void ConsoleWindow::RebuildSessionMenu() {
  if (mApp == nullptr) return;
  PlistDict& root = mApp->store().mainDict();
  QSignalBlocker block(mSessions);
  mSessions->clear();
  const std::vector<std::string> titles = SessionMenuTitles(root);
  const std::int64_t count = SessionCount(root);
  for (std::size_t i = 0; i < titles.size(); ++i) {
    if (titles[i].empty() && static_cast<std::int64_t>(i) >= count) {
      mSessions->insertSeparator(static_cast<int>(i));
    } else {
      mSessions->addItem(ToQ(titles[i]));
    }
  }
  SelectIndex(SelectedIndex());
}

void ConsoleWindow::ShowSession() {
  if (mApp == nullptr) return;
  const PlistDict& root = mApp->store().mainDict();
  const std::int64_t index = SelectedIndex();
  const PlistDict* session = GetSessionDict(root, index);
  const bool editable = session != nullptr && !IsCopying();
  const PlistDict* console = session ? session->GetDict("consoleDict") : nullptr;
  mSideA->setText(console ? ToQ(console->GetString("topFolder")) : QString());
  mSideB->setText(console ? ToQ(console->GetString("bottomFolder")) : QString());
  const PlistDict* settings = session ? session->GetDict("settingsDict") : nullptr;
  const std::int64_t task = settings ? settings->GetInt("settTask", 1) : 1;
  mSyncRadio->setChecked(session && task == 1);
  mBackupRadio->setChecked(session && task != 1);
  mExact->setChecked(settings && settings->IsFlagOn("settExact"));
  for (QWidget* widget : {static_cast<QWidget*>(mSideA), static_cast<QWidget*>(mSideB),
                          static_cast<QWidget*>(mSyncRadio), static_cast<QWidget*>(mBackupRadio),
                          static_cast<QWidget*>(mExact)})
    widget->setEnabled(editable);
  for (QPushButton* button : mConsole->findChildren<QPushButton*>()) button->setEnabled(editable);
  QStringList on;
  if (session) for (const std::string& title : OptionsOnTitles(*session)) on << ToQ(title);
  mOptionsOn->setText(on.isEmpty() ? QString() : QStringLiteral("● ") + on.join(QStringLiteral("  ● ")));
  const std::optional<std::string> exactLine =
      session ? LastExactSyncLine(*session, mApp->paths().exactSyncIndexFolder) : std::nullopt;
  mLastExact->setText(exactLine ? DisplayText(*exactLine) : QString());
  mLastExact->setVisible(exactLine.has_value());
  // Before any run the progress box says what the button will do.
  if (!IsCopying() && !mCountdown.isStartingSyncAndQuit() && !mLastOutcome)
    mTaskComment->setText(DisplayText(ConsoleIdleText(root, index)));
  const QString title = ToQ(MainButtonTitle(root, index, IsCopying() || mCountdown.isStartingSyncAndQuit()));
  mMainButton->setText(title);
  mMainAction->setText(title);
}

bool ConsoleWindow::IsCopying() const { return mRunning; }

void ConsoleWindow::StopCopying(bool quitWhenStopped) {
  if (quitWhenStopped) mQuitWhenStopped = true;
  if (mRunning && mRun) {
    mUserPressedStop = !quitWhenStopped;
    mRun->Stop();
    mMainButton->setEnabled(false);
  }
}

bool ConsoleWindow::TimerSyncEnabled(bool enabled) {
  if (mTimers == nullptr) return false;
  const bool was = mTimers->checking();
  if (enabled) {
    PlanTimers();
  } else {
    mTimers->Pause();
  }
  return was;
}

std::string ConsoleWindow::WindowTitle() const { return FromQ(windowTitle()); }
void ConsoleWindow::SetWindowTitle(const std::string& title) { setWindowTitle(ToQ(title)); }
void ConsoleWindow::SetRepresentedFile(const std::string& path) { setWindowFilePath(ToQ(path)); }
void ConsoleWindow::ShowMainWindow() { show(); }

void ConsoleWindow::ShowPanel(const std::string& identifier) {
  const bool closed = identifier == "documentClosed";
  mNavigation->setEnabled(!closed);
  mSessions->setEnabled(!closed);
  mMainButton->setEnabled(!closed);
  mTimerButton->setEnabled(!closed);
  if (closed) {
    mPanels->setCurrentWidget(mClosedPanel);
    PlanTimers();
    return;
  }
  for (int row = 0; row < mNavigation->count(); ++row) {
    if (mNavigation->item(row)->data(Qt::UserRole).toString() == ToQ(identifier)) {
      mNavigation->setCurrentRow(row);
      mPanels->setCurrentIndex(row);
    }
  }
}

void ConsoleWindow::NoteRecentDocument(const std::string& path) {
  const QString qpath = ToQ(path);
  mRecent.removeAll(qpath);
  mRecent.prepend(qpath);
  while (mRecent.size() > 10) mRecent.removeLast();
  QSettings().setValue(QStringLiteral("recentDocuments"), mRecent);
  UpdateRecentMenu();
}

void ConsoleWindow::ClearTaskComment() { mTaskComment->clear(); }
void ConsoleWindow::ResetLogText() { mLogText.clear(); }
void ConsoleWindow::Beep() { QApplication::beep(); }

bool ConsoleWindow::RequestQuit() {
  if (mApp == nullptr || !mApp->IsLaunched()) return true;
  if (!mApp->controller().ShouldTerminate()) return false;
  mApp->Quit();
  return true;
}

void ConsoleWindow::closeEvent(QCloseEvent* event) {
  if (RequestQuit()) {
    event->accept();
    qApp->quit();
  } else {
    event->ignore();
  }
}

}  // namespace marigold
