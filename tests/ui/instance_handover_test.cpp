// A second start of the program, a real process, hands its document to the running one and ends.
#include <QFile>
#include <QProcess>
#include <QtTest>

#include "build_paths.h"
#include "ui/instance_handover.h"
#include "ui_fixture.h"
#include "ui_tests.h"

namespace marigold::testing {

class InstanceHandoverTest : public QObject {
  Q_OBJECT
 private slots:
  void SecondStartHandsItsDocumentOver();
};

void InstanceHandoverTest::SecondStartHandsItsDocumentOver() {
  LaunchedProgram program;
  const std::string path = program.home.root() + "/Handed over.mgy";
  QVERIFY(program.app.store().WriteFileSession(path));
  // What a crashed program leaves behind must not keep this one from answering.
  QFile stale(InstanceSocketPath());
  QVERIFY(stale.open(QIODevice::WriteOnly));
  stale.close();
  InstanceServer server;
  QVERIFY(server.Listen());
  connect(&server, &InstanceServer::handedOver, &program.window,
          [&program](const QString& handed) { program.window.OpenHandedOver(FromQ(handed)); });

  QProcess second;
  second.setProcessChannelMode(QProcess::ForwardedChannels);
  QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
  environment.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
  environment.insert(QStringLiteral("ASAN_OPTIONS"), QStringLiteral("detect_leaks=0"));
  second.setProcessEnvironment(environment);
  second.start(QStringLiteral(MARIGOLD_GUI_PATH), {QString::fromStdString(path)});
  QTRY_VERIFY_WITH_TIMEOUT(second.state() == QProcess::NotRunning, 60000);
  QCOMPARE(second.exitStatus(), QProcess::NormalExit);
  QCOMPARE(second.exitCode(), 0);
  QTRY_COMPARE(program.app.store().pathDocumentFile, path);
}

static RegisterUiTests<InstanceHandoverTest> registered;

}  // namespace marigold::testing

#include "instance_handover_test.moc"
