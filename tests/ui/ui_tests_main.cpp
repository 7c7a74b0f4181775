// One program runs every desktop test class on the offscreen platform. A first argument that
// names a class runs only that class; the other arguments go to QtTest.
#include <QApplication>
#include <QtTest>

#include "ui_tests.h"

int main(int argc, char** argv) {
  qputenv("QT_QPA_PLATFORM", "offscreen");
  QApplication application(argc, argv);
  QString only;
  if (argc > 1 && argv[1][0] != '-') {
    only = QString::fromLocal8Bit(argv[1]);
    argv[1] = argv[0];
    --argc;
    ++argv;
  }
  int failed = 0;
  for (const auto& make : marigold::testing::UiTestClasses()) {
    std::unique_ptr<QObject> tests = make();
    if (!only.isEmpty() && !QString::fromLatin1(tests->metaObject()->className()).endsWith(only)) continue;
    failed += QTest::qExec(tests.get(), argc, argv);
  }
  return failed == 0 ? 0 : 1;
}
