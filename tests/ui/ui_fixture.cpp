#include "ui_fixture.h"

#include <QDialog>
#include <QLabel>
#include <QMessageBox>

namespace marigold::testing {

DialogScript::DialogScript() {
  mTimer.setInterval(20);
  connect(&mTimer, &QTimer::timeout, this, &DialogScript::Poll);
  mTimer.start();
}

void DialogScript::Poll() {
  QWidget* modal = QApplication::activeModalWidget();
  // Each time a window comes to the front it gets the next answer: a sheet that stays after a
  // refusal is answered again once the refusal has gone.
  if (modal == nullptr || modal == mFront || mAnswers.empty() || !modal->isVisible()) return;
  mFront = modal;
  seen << TextOf(modal);
  Answer answer = std::move(mAnswers.front());
  mAnswers.pop_front();
  // Answered from its own event a moment later, as a person would once the window has settled
  // (a file panel fills itself in after it shows); an answer that opens another window (a
  // refusal) then leaves this poll free to answer that one too.
  QTimer::singleShot(60, modal, [answer = std::move(answer), modal] { answer(modal); });
}

QString TextOf(QWidget* window) {
  if (auto* box = qobject_cast<QMessageBox*>(window)) return box->text();
  return window->windowTitle();
}

void Click(QWidget* window, const QString& name) {
  for (QAbstractButton* button : window->findChildren<QAbstractButton*>()) {
    if (button->objectName() == name || button->text().remove(QLatin1Char('&')) == name) {
      button->click();
      return;
    }
  }
  qWarning("no button \"%s\" in %s", qPrintable(name), qPrintable(window->objectName()));
}

LaunchedProgram::LaunchedProgram(FileSystem* fs) : window(fs), app(window.prompts(), &window) {
  // The scheduler lock and the program's socket live here, away from anyone else's.
  home.SetEnv("XDG_RUNTIME_DIR", home.root());
  app.Launch(LaunchOptions{});
  window.Attach(app);
  app.controller().FinishLaunching();
}

}  // namespace marigold::testing

#include "ui_tests.h"

namespace marigold::testing {
std::vector<UiTestMaker>& UiTestClasses() {
  static std::vector<UiTestMaker> classes;
  return classes;
}
}  // namespace marigold::testing
