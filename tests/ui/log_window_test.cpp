// The log window steps between the errors of a log file, both ways and around the end.
#include <QTextEdit>
#include <QtTest>
#include <fstream>

#include "platform/linux_file_system.h"
#include "support/temp_home.h"
#include "ui/log_window.h"
#include "ui_tests.h"

namespace marigold::testing {

class LogWindowTest : public QObject {
  Q_OBJECT
 private slots:
  void ErrorNavigation();
};

void LogWindowTest::ErrorNavigation() {
  TempHome home;
  const std::string path = home.root() + "/MGLog_2026_11_23_10_00_00.txt";
  // Lines before the errors hold text that is longer in UTF-8 than on screen.
  std::ofstream(path) << "Début de la tâche\n\u221A Can't copy «a»\nCopied file b\n\u221A Can't copy c\nEnd\n";
  LinuxFileSystem fs;
  LogWindow window(fs, nullptr);
  QVERIFY(window.Fill(path, ""));
  QCOMPARE(window.windowTitle(), QString::fromStdString(path));

  const QString text = window.view()->toPlainText();
  const int first = text.indexOf(QStringLiteral("\u221A Can't copy «a»"));
  const int second = text.indexOf(QStringLiteral("\u221A Can't copy c"));
  auto selectedAt = [&] { return window.view()->textCursor().selectionStart(); };
  const struct {
    bool previous;
    int expected;
  } steps[] = {{false, first}, {false, second}, {false, first}, {true, second}, {true, first}};
  for (const auto& step : steps) {
    window.FindError(step.previous);
    QCOMPARE(selectedAt(), step.expected);
    QCOMPARE(window.view()->textCursor().selectedText(), QStringLiteral("\u221A "));
  }
}

static RegisterUiTests<LogWindowTest> registered;

}  // namespace marigold::testing

#include "log_window_test.moc"
