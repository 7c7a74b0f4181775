// Runs started with the main button on real trees: the questions a synchronisation asks, the
// preview with an item switched off, and Stop pressed while files are being copied.
#include <QListView>
#include <QToolButton>
#include <QSignalSpy>
#include <QTreeView>
#include <QtTest>
#include <filesystem>

#include "engine/preview_editor.h"
#include "model/document_model.h"
#include "platform/linux_file_system.h"
#include "support/fault_file_system.h"
#include "support/tree_values.h"
#include "ui/preview_model.h"
#include "ui/preview_window.h"
#include "ui_fixture.h"
#include "ui_tests.h"

namespace marigold::testing {

class RunTest : public QObject {
  Q_OBJECT
 private slots:
  void SyncWithPromptAndPreview();
  void StopDuringCopy();
};

namespace {

struct Sides {
  explicit Sides(LaunchedProgram& program, std::int64_t task) {
    a = program.home.root() + "/A";
    b = program.home.root() + "/B";
    std::filesystem::create_directories(a);
    std::filesystem::create_directories(b);
    PlistDict& session = *GetSessionDict(program.document(), 0);
    session.GetDict("consoleDict")->Set("topFolder", a);
    session.GetDict("consoleDict")->Set("bottomFolder", b);
    session.GetDict("settingsDict")->Set("settTask", task);
    program.window.SetDocumentSessions();
  }
  std::string a, b;
};

// The row of the preview whose side A name is `name`, searched through every open folder.
QModelIndex RowNamed(QAbstractItemModel* model, const QString& name, const QModelIndex& parent = {}) {
  for (int row = 0; row < model->rowCount(parent); ++row) {
    const QModelIndex index = model->index(row, kPreviewColumnSideA, parent);
    if (index.data().toString() == name) return index;
    if (QModelIndex found = RowNamed(model, name, index); found.isValid()) return found;
  }
  return {};
}

bool RunToTheEnd(LaunchedProgram& program) {
  QSignalSpy finished(&program.window, &ConsoleWindow::runFinished);
  program.window.mainButton()->click();
  return finished.count() > 0 || finished.wait(60000);
}

}  // namespace

void RunTest::SyncWithPromptAndPreview() {
  LaunchedProgram program;
  Sides sides(program, 1);
  trees::Build(sides.a, {{"new1.txt", "one"}, {"new2.txt", "two"}, {"x/", trees::kDir}, {"x/inner.txt", "in"}});
  trees::Build(sides.b, {{"x", "file"}});
  trees::SetModified(sides.a + "/x", 1500000000);
  trees::SetModified(sides.b + "/x", 1600000000);
  GetSessionDict(program.document(), 0)->GetDict("conflictsDict")->Set("conflictFileFolderAsk", 1);
  program.app.preferences().dict().Set("prefAskConfirmation", 1);
  program.app.preferences().dict().Set("prefPreview", 1);

  DialogScript script;
  script.Then([](QWidget* box) { Click(box, QStringLiteral("OK")); });       // start the task
  script.Then([](QWidget* prompt) { Click(prompt, QStringLiteral("skip")); });  // keep both x as they are
  script.Then([](QWidget* window) {
    auto* preview = qobject_cast<PreviewWindow*>(window);
    QVERIFY(preview != nullptr);
    QAbstractItemModel* model = preview->outline()->model();
    const QModelIndex row = RowNamed(model, QStringLiteral("new2.txt"));
    QVERIFY(row.isValid());
    preview->ClickRow(row.siblingAtColumn(kPreviewColumnAction), 0);
    QVERIFY(PreviewModel::ItemOf(row)->copyMode() < 0);
    Click(preview, QStringLiteral("continue"));
  });
  QVERIFY(RunToTheEnd(program));
  QVERIFY(script.Done());
  QCOMPARE(script.seen.size(), 3);
  QVERIFY(program.window.lastOutcome()->ending == RunEnding::kCompleted);
  const trees::Tree expectedB{{"new1.txt", "one"}, {"x", "file"}};
  QVERIFY(trees::Read(sides.b) == expectedB);
  QVERIFY(trees::Read(sides.a).count("x/inner.txt") == 1);
}

void RunTest::StopDuringCopy() {
  LinuxFileSystem real;
  FaultFileSystem fs(real);
  LaunchedProgram program(&fs);
  Sides sides(program, 2);
  trees::Build(sides.a, {{"a.txt", "a"}, {"b.txt", "b"}, {"c.txt", "c"}, {"d.txt", "d"}, {"e.txt", "e"}});
  program.app.preferences().dict().Set("prefAskConfirmation", 0);
  // The user presses the button (now Stop) while c.txt is about to be copied.
  fs.AddRule(RunBefore(FsOperation::kCopyItem, sides.a + "/c.txt", [&program] {
    QMetaObject::invokeMethod(&program.window, [&program] { program.window.mainButton()->click(); },
                              Qt::BlockingQueuedConnection);
  }));
  QVERIFY(RunToTheEnd(program));
  QVERIFY(program.window.lastOutcome()->Stopped());
  const trees::Tree b = trees::Read(sides.b);
  QVERIFY(b.count("a.txt") == 1 && b.count("e.txt") == 0);
  QCOMPARE(program.window.mainButton()->text(), QStringLiteral("Backup"));
}

static RegisterUiTests<RunTest> registered;

}  // namespace marigold::testing

#include "run_test.moc"
