// Renders every window of the desktop program to PNG files, on a sample document in a throwaway
// home, for people to look at: the console, the session sheets, the preferences, and a real run
// with its confirmation, replace prompt and preview.
//   marigold-screenshots OUTPUT_FOLDER   (with QT_QPA_PLATFORM=offscreen)
#include <QApplication>
#include <QDir>
#include <QFile>
#include <QMessageBox>
#include <QPointer>
#include <QPushButton>
#include <QTabWidget>
#include <QTemporaryDir>
#include <QTimer>
#include <QTreeView>
#include <cstdio>
#include <cstdlib>

#include "app/main_app.h"
#include "app/session_management.h"
#include "model/document_model.h"
#include "ui/console_window.h"
#include "ui/log_window.h"
#include "ui/mail_account_sheet.h"
#include "ui/name_sheet.h"
#include "ui/preferences_window.h"
#include "ui/preview_window.h"
#include "ui/replace_dialog.h"
#include "ui/sort_sessions_sheet.h"

namespace {

using namespace marigold;

QString gOutput;
int gShot = 0;

void Save(QWidget* widget, const QString& name) {
  widget->show();
  QApplication::processEvents();
  const QString path = QDir(gOutput).filePath(QStringLiteral("%1-%2.png").arg(++gShot, 2, 10, QLatin1Char('0')).arg(name));
  widget->grab().save(path);
  std::printf("%s\n", qPrintable(path));
}

void Write(const QString& path, const QByteArray& content, qint64 modified) {
  QDir().mkpath(QFileInfo(path).absolutePath());
  QFile file(path);
  file.open(QIODevice::WriteOnly);
  file.write(content);
  file.close();
  file.open(QIODevice::ReadWrite);
  file.setFileTime(QDateTime::fromSecsSinceEpoch(modified), QFileDevice::FileModificationTime);
}

void Click(QWidget* window, const QString& name) {
  for (QAbstractButton* button : window->findChildren<QAbstractButton*>()) {
    if (button->objectName() == name || button->text().remove(QLatin1Char('&')) == name) {
      button->click();
      return;
    }
  }
}

}  // namespace

int main(int argc, char** argv) {
  QApplication application(argc, argv);
  if (argc < 2) {
    std::fprintf(stderr, "usage: marigold-screenshots OUTPUT_FOLDER\n");
    return 2;
  }
  gOutput = QString::fromLocal8Bit(argv[1]);
  QDir().mkpath(gOutput);
  QTemporaryDir home;
  ::setenv("HOME", qPrintable(home.path()), 1);
  ::unsetenv("XDG_CONFIG_HOME");
  ::unsetenv("XDG_DATA_HOME");
  const QString a = home.filePath(QStringLiteral("Documents"));
  const QString b = home.filePath(QStringLiteral("Backup Disk/Documents"));
  Write(a + "/Reports/2026 budget.ods", "budget", 1763800000);
  Write(a + "/Reports/minutes.txt", "minutes", 1763800000);
  Write(a + "/Photos/beach.jpg", "jpeg", 1763700000);
  Write(a + "/todo.txt", "new list", 1763900000);
  Write(a + "/Letters/old.txt", "letter", 1763000000);
  Write(b + "/todo.txt", "old list", 1763000000);
  Write(b + "/Letters", "a file where side A has a folder", 1763950000);
  Write(b + "/draft.txt", "only on B", 1763500000);

  ConsoleWindow window;
  MainApp app(window.prompts(), &window);
  if (!app.Launch(LaunchOptions{}).ok) return 1;
  window.Attach(app);
  app.controller().FinishLaunching();
  PlistDict& root = app.store().mainDict();
  PlistDict& session = *GetSessionDict(root, 0);
  session.GetDict("consoleDict")->Set("topFolder", a.toStdString());
  session.GetDict("consoleDict")->Set("bottomFolder", b.toStdString());
  session.GetDict("conflictsDict")->Set("conflictFileFolderAsk", 1);
  NewSession(root, "Photos to the NAS");
  root.Set("sessionIndex", 0);
  window.SetDocumentSessions();
  window.resize(780, 500);
  Save(&window, QStringLiteral("console"));

  {
    NameSheet sheet(root, std::nullopt, ProposedNewSessionName(root), &window);
    Save(&sheet, QStringLiteral("name-sheet"));
  }
  {
    SortSessionsSheet sheet(*root.GetArray("sessionsArray"), &window);
    Save(&sheet, QStringLiteral("sort-sheet"));
  }
  {
    // Both sides changed since the last synchronisation: the prompt that can go either way.
    ReplaceRequest request;
    request.source = (a + "/Reports/minutes.txt").toStdString();
    request.dest = (b + "/Reports/minutes.txt").toStdString();
    request.lastBackupDate = 1763000000;
    request.copyMode = 4;
    request.conflict = 31;
    request.isSync = true;
    request.sideA = {true, ItemKind::kFile, 7, 1763800000};
    request.sideB = {true, ItemKind::kFile, 12, 1763700000};
    ReplaceDialog dialog(request, &window);
    Save(&dialog, QStringLiteral("replace-prompt"));
  }
  {
    app.preferences().dict().Set("prefSaveLogFile", 1);
    PreferencesWindow preferences(app.preferences(), false, &window);
    auto* tabs = preferences.findChild<QTabWidget*>();
    for (int tab = 0; tab < tabs->count(); ++tab) {
      tabs->setCurrentIndex(tab);
      Save(&preferences, QStringLiteral("preferences-") + tabs->tabText(tab).toLower());
    }
  }

  {
    PlistDict account{{"mSendEmailFrom", "robin@example.org"}, {"mSendEmailTo", "robin@example.org"},
                      {"mSendEmailAccountID", "robin"},       {"mSendEmailSMTP", "smtp.example.org"},
                      {"mSendEmailPort", "587"},              {"mSendEmailPassword", "secret"},
                      {"mSendEmailUseSSL", std::int64_t{-1}}};
    MailAccountSheet sheet(account, &window);
    Save(&sheet, QStringLiteral("mail-account-sheet"));
  }

  // A real run: every window it opens is pictured, then answered.
  app.preferences().dict().Set("prefAskConfirmation", 1);
  app.preferences().dict().Set("prefPreview", 1);
  QTimer answers;
  QPointer<QWidget> last;
  QObject::connect(&answers, &QTimer::timeout, [&] {
    QWidget* modal = QApplication::activeModalWidget();
    if (modal == nullptr || modal == last) return;
    last = modal;
    QTimer::singleShot(150, modal, [modal] {
      if (auto* preview = qobject_cast<PreviewWindow*>(modal)) {
        preview->outline()->expandAll();
        Save(modal, QStringLiteral("preview"));
        Click(modal, QStringLiteral("continue"));
      } else if (qobject_cast<ReplaceDialog*>(modal) != nullptr) {
        Save(modal, QStringLiteral("replace-prompt"));
        Click(modal, QStringLiteral("skip"));
      } else if (auto* box = qobject_cast<QMessageBox*>(modal)) {
        Save(modal, QStringLiteral("alert"));
        box->defaultButton()->click();
      }
    });
  });
  answers.start(30);
  QObject::connect(&window, &ConsoleWindow::runFinished, [&] {
    QTimer::singleShot(100, [&] {
      Save(&window, QStringLiteral("console-after-run"));
      LogWindow* log = window.OpenLogWindow();
      log->FindError(false);
      Save(log, QStringLiteral("log-window"));
      QApplication::exit(0);
    });
  });
  QTimer::singleShot(0, [&] { window.MainButtonPressed(); });
  QTimer::singleShot(60000, [] { QApplication::exit(1); });
  return application.exec();
}
