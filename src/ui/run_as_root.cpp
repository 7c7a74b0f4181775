#include "ui/run_as_root.h"

#include <QApplication>
#include <QFileInfo>
#include <QProcess>
#include <QTimer>

#include "ui/alert_dialog.h"
#include "util/strings_table.h"

namespace marigold {
namespace {

bool Relaunch(const QString& program, const QStringList& arguments) {
  return QProcess::startDetached(program, arguments);
}

void Refused(QWidget* parent, const char* title) {
  AlertRequest alert;
  alert.title = GLS(title);
  alert.text = GLS("Authorization denied.");
  alert.buttons = {GLS("OK")};
  ShowAlert(parent, alert);
}

}  // namespace

bool PrefRunAsRoot(QWidget* parent, bool wantsRoot, bool runningAsRoot) {
  const QString executable = QApplication::applicationFilePath();
  if (!QFileInfo(executable).exists() || wantsRoot == runningAsRoot) return true;
  if (wantsRoot) {
    // pkexec asks for the password itself; this instance ends once the privileged one is on its way.
    if (!Relaunch(QStringLiteral("pkexec"), {executable, QStringLiteral("--setuidroot")})) {
      Refused(parent, "Root Permissions:");
      return false;
    }
    QTimer::singleShot(0, qApp, [] { QApplication::closeAllWindows(); });
    return true;
  }
  // Back to the user's own rights: a plain instance, started for the user who owns the session.
  if (!Relaunch(executable, {QStringLiteral("--setuidme")})) {
    Refused(parent, "Turning off Root Permissions:");
    return false;
  }
  AlertRequest question;
  question.title = GLS("Root Permissions:");
  question.text = GLS("Quit and relaunch Marigold to apply the changes.");
  question.buttons = {GLS("Quit Now"), GLS("Later")};
  if (ShowAlert(parent, question) == 0) QTimer::singleShot(0, qApp, [] { QApplication::closeAllWindows(); });
  return true;
}

}  // namespace marigold
