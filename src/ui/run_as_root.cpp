#include "ui/run_as_root.h"

#include <fcntl.h>
#include <pwd.h>
#include <unistd.h>

#include <cstdlib>

#include <QApplication>
#include <QFileInfo>
#include <QPointer>
#include <QProcess>
#include <QTimer>
#include <QWidget>

#include "ui/alert_dialog.h"
#include "util/strings_table.h"

namespace marigold {
namespace {

// pkexec's own exit statuses: the password dialog was dismissed or the user is not allowed (126),
// or the authentication failed (127). The program never ran.
constexpr int kPkexecDismissed = 126;
constexpr int kPkexecFailed = 127;
const QByteArray kStartedLine = QByteArrayLiteral("marigold: privileged instance started\n");

// The privileged instance's pkexec. Never deleted once the instance runs: deleting a QProcess
// kills what it started.
QProcess* gPrivileged = nullptr;

void Refused(QWidget* parent, const char* title, const std::string& text) {
  AlertRequest alert;
  alert.title = GLS(title);
  alert.text = text;
  alert.buttons = {GLS("OK")};
  ShowAlert(parent, alert);
}

bool StartPrivileged(QWidget* parent, const QString& executable, std::function<void()> refused) {
  if (gPrivileged != nullptr) return true;  // a relaunch is already waiting for its password
  auto* process = new QProcess;
  process->setProgram(QStringLiteral("pkexec"));
  process->setArguments({executable, QStringLiteral("--setuidroot")});
  process->setStandardInputFile(QProcess::nullDevice());
  process->setProcessChannelMode(QProcess::ForwardedErrorChannel);
  QPointer<QWidget> owner(parent);
  auto giveUp = [process, owner, refused](const std::string& text) {
    QObject::disconnect(process, nullptr, nullptr, nullptr);
    process->deleteLater();
    gPrivileged = nullptr;
    Refused(owner, "Root Permissions:", text);
    if (refused) refused();
  };
  QObject::connect(process, &QProcess::readyReadStandardOutput, qApp, [process] {
    if (!process->peek(1 << 16).contains(kStartedLine)) return;
    // The privileged instance runs: this one steps aside.
    QObject::disconnect(process, nullptr, nullptr, nullptr);
    QApplication::closeAllWindows();
  });
  QObject::connect(process, &QProcess::finished, qApp, [giveUp](int status, QProcess::ExitStatus) {
    if (status == kPkexecDismissed || status == kPkexecFailed) {
      giveUp(GLS("Authorization denied."));
    } else {
      giveUp(GLS("Marigold could not start with administrator rights (exit status ") + std::to_string(status) + ").");
    }
  });
  QObject::connect(process, &QProcess::errorOccurred, qApp, [giveUp, process](QProcess::ProcessError error) {
    if (error == QProcess::FailedToStart) giveUp(GLS("pkexec could not be started: ") + FromQ(process->errorString()));
  });
  gPrivileged = process;
  process->start();
  return true;
}

// Starts the plain instance with the rights of the user pkexec acted for. Started from a root
// instance without dropping them, it would be root again under another name.
bool StartAsInvokingUser(const QString& executable) {
  QProcess process;
  process.setProgram(executable);
  process.setArguments({QStringLiteral("--setuidme")});
  const char* invoker = std::getenv("PKEXEC_UID");
  const passwd* user = invoker && ::geteuid() == 0 ? ::getpwuid(static_cast<uid_t>(std::atol(invoker))) : nullptr;
  if (user != nullptr) {
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("XDG_RUNTIME_DIR"), QStringLiteral("/run/user/%1").arg(user->pw_uid));
    process.setProcessEnvironment(environment);
    process.setProgram(QStringLiteral("runuser"));
    process.setArguments({QStringLiteral("-u"), QString::fromLocal8Bit(user->pw_name), QStringLiteral("--"),
                          executable, QStringLiteral("--setuidme")});
  }
  return process.startDetached();
}

}  // namespace

bool PrefRunAsRoot(QWidget* parent, bool wantsRoot, bool runningAsRoot, std::function<void()> refused) {
  const QString executable = QApplication::applicationFilePath();
  if (!QFileInfo(executable).exists() || wantsRoot == runningAsRoot) return true;
  // pkexec asks for the password itself; this instance ends once the privileged one says it runs.
  if (wantsRoot) return StartPrivileged(parent, executable, std::move(refused));
  // Back to the user's own rights: a plain instance, started for the user who owns the session.
  if (!StartAsInvokingUser(executable)) {
    Refused(parent, "Turning off Root Permissions:", GLS("Authorization denied."));
    return false;
  }
  AlertRequest question;
  question.title = GLS("Root Permissions:");
  question.text = GLS("Quit and relaunch Marigold to apply the changes.");
  question.buttons = {GLS("Quit Now"), GLS("Later")};
  if (ShowAlert(parent, question) == 0) QTimer::singleShot(0, qApp, [] { QApplication::closeAllWindows(); });
  return true;
}

void ReportPrivilegedInstanceStarted() {
  if (::isatty(STDOUT_FILENO)) return;
  [[maybe_unused]] const ssize_t written = ::write(STDOUT_FILENO, kStartedLine.constData(), kStartedLine.size());
  // The asking instance is about to quit: nothing more may go to a pipe nobody reads.
  const int null = ::open("/dev/null", O_WRONLY | O_CLOEXEC);
  if (null >= 0) {
    ::dup2(null, STDOUT_FILENO);
    ::close(null);
  }
}

}  // namespace marigold
