// Documents through the window: save, the unsaved-changes question, open again.
#include <QFileDialog>
#include <QLineEdit>
#include <QSignalSpy>
#include <QtTest>

#include "model/document_model.h"
#include "ui_fixture.h"
#include "ui_tests.h"
#include "util/plist_io.h"

namespace marigold::testing {

class DocumentsTest : public QObject {
  Q_OBJECT
 private slots:
  void SaveAskAndOpenAgain();
};

namespace {

std::string SideA(const PlistDict& document) {
  return GetSessionDict(document, 0)->GetDict("consoleDict")->GetString("topFolder");
}

void AnswerFileDialog(DialogScript& script, const QString& path) {
  script.Then([path](QWidget* window) {
    auto* dialog = qobject_cast<QFileDialog*>(window);
    QVERIFY(dialog != nullptr);
    // The name field takes a whole path, as a person may type one.
    dialog->findChild<QLineEdit*>(QStringLiteral("fileNameEdit"))->setText(path);
    static_cast<QDialog*>(dialog)->accept();
  });
}

}  // namespace

void DocumentsTest::SaveAskAndOpenAgain() {
  LaunchedProgram program;
  DialogScript script;
  const QString file = QString::fromStdString(program.home.home()) + QStringLiteral("/work.mgy");

  program.window.SetSideFolder(true, "/srv/photos");
  AnswerFileDialog(script, file);
  QVERIFY(program.app.controller().FileSaveAs());
  QCOMPARE(program.window.windowTitle(), QStringLiteral("work"));
  auto saved = ReadPlistDictFile(file.toStdString());
  QVERIFY(saved.has_value());
  QCOMPARE(SideA(*saved), std::string("/srv/photos"));

  // An edit, then New: Cancel keeps the edit, Save writes it before the new document comes.
  program.window.SetSideFolder(true, "/srv/music");
  script.Then([](QWidget* box) { Click(box, QStringLiteral("Cancel")); });
  program.app.controller().FileNew();
  QCOMPARE(SideA(program.document()), std::string("/srv/music"));
  script.Then([](QWidget* box) { Click(box, QStringLiteral("Save")); });
  program.app.controller().FileNew();
  QVERIFY(script.Done());
  QCOMPARE(script.seen.size(), 3);
  QVERIFY(script.seen[1].contains(QStringLiteral("save changes")));
  QCOMPARE(SideA(*ReadPlistDictFile(file.toStdString())), std::string("/srv/music"));
  QCOMPARE(SideA(program.document()), std::string(""));

  // The untitled document is unchanged: opening the file asks nothing.
  QVERIFY(program.app.controller().OpenFile(file.toStdString()));
  QCOMPARE(program.window.findChild<QLineEdit*>(QStringLiteral("sideA"))->text(), QStringLiteral("/srv/music"));
  QCOMPARE(program.window.windowTitle(), QStringLiteral("work"));
  QCOMPARE(script.seen.size(), 3);
}

static RegisterUiTests<DocumentsTest> registered;

}  // namespace marigold::testing

#include "documents_test.moc"
