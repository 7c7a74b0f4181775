// What the desktop tests share: a launched program in a throwaway home, and a script of answers
// for the modal windows it opens (each answer runs when its window is up, as a person would).
#pragma once

#include <QAbstractButton>
#include <QApplication>
#include <QObject>
#include <QPointer>
#include <QTimer>
#include <QWidget>
#include <deque>
#include <functional>
#include <memory>

#include "app/main_app.h"
#include "support/temp_home.h"
#include "ui/console_window.h"

namespace marigold::testing {

// Answers the modal windows that open, in order. An answer gets the window and acts on it.
class DialogScript : public QObject {
 public:
  using Answer = std::function<void(QWidget*)>;
  DialogScript();
  void Then(Answer answer) { mAnswers.push_back(std::move(answer)); }
  bool Done() const { return mAnswers.empty(); }
  // Texts of the windows answered so far (title, then main text), for checks.
  QStringList seen;

 private:
  void Poll();
  std::deque<Answer> mAnswers;
  QTimer mTimer;
  QPointer<QWidget> mFront;  // the window answered last, while it is up
};

// Clicks the button of `window` whose text (without "&") or object name is `name`.
void Click(QWidget* window, const QString& name);
// The main text of a message box, a dialog's title otherwise.
QString TextOf(QWidget* window);

// The program launched in a fresh home, its window not shown.
struct LaunchedProgram {
  explicit LaunchedProgram(FileSystem* fs = nullptr);
  TempHome home;
  ConsoleWindow window;
  MainApp app;
  PlistDict& document() { return app.store().mainDict(); }
};

}  // namespace marigold::testing
