// The session pop-up's commands through the window: the name sheet, the questions, the refusals
// and the sort sheet, each on a fresh document of two sessions.
#include <QComboBox>
#include <QLineEdit>
#include <QListView>
#include <QMimeData>
#include <QtTest>

#include "app/session_management.h"
#include "model/document_model.h"
#include "ui/name_sheet.h"
#include "ui/sort_sessions_sheet.h"
#include "ui_fixture.h"
#include "ui_tests.h"

namespace marigold::testing {

struct Command {
  int selectFirst;  // a session, or -1 for "All Sessions"
  SessionMenuTag tag;
  bool alt;
  std::vector<DialogScript::Answer> answers;
  QStringList expectedTexts;  // every window's text, in order
};

}  // namespace marigold::testing

Q_DECLARE_METATYPE(std::shared_ptr<marigold::testing::Command>)

namespace marigold::testing {

class SessionPopUpTest : public QObject {
  Q_OBJECT
 private slots:
  void Commands_data();
  void Commands();
};

namespace {

DialogScript::Answer Name(const char* name) {
  return [name](QWidget* sheet) {
    sheet->findChild<QLineEdit*>()->setText(QString::fromUtf8(name));
    Click(sheet, QStringLiteral("OK"));
  };
}
DialogScript::Answer Press(const char* button) {
  return [button](QWidget* window) { Click(window, QString::fromUtf8(button)); };
}
// Drags the third session above the first, then presses `button`.
DialogScript::Answer DragThirdFirst(const char* button) {
  return [button](QWidget* window) {
    auto* sheet = static_cast<SortSessionsSheet*>(window);
    SortSessionsModel* model = sheet->model();
    std::unique_ptr<QMimeData> dragged(model->mimeData({model->index(2)}));
    model->dropMimeData(dragged.get(), Qt::MoveAction, 0, 0, {});
    Click(sheet, QString::fromUtf8(button));
  };
}

int MenuIndex(PlistDict& root, SessionMenuTag tag) {
  for (std::size_t i = 0; i < kFixedSessionMenuItems.size(); ++i)
    if (kFixedSessionMenuItems[i].tag == tag) return static_cast<int>(SessionCount(root) + i);
  return -1;
}

QStringList Names(PlistDict& root) {
  QStringList names;
  for (std::int64_t i = 0; i < SessionCount(root); ++i) names << QString::fromStdString(EnsureSessionName(root, i));
  return names;
}

}  // namespace

void SessionPopUpTest::Commands_data() {
  QTest::addColumn<std::shared_ptr<Command>>("command");
  QTest::addColumn<QStringList>("names");
  QTest::addColumn<int>("selected");
  const QStringList two{QStringLiteral("Default Sync Session"), QStringLiteral("Default Backup Session")};
  auto row = [](const char* name, Command command, QStringList names, int selected) {
    QTest::newRow(name) << std::make_shared<Command>(std::move(command)) << names << selected;
  };
  row("new refuses a taken name, then takes a free one",
      {0, SessionMenuTag::New, false, {Name("Default Backup Session"), Press("OK"), Name("Photos")},
       {"Session Name", "Name duplicated.", "Session Name"}},
      two + QStringList{QStringLiteral("Photos")}, 2);
  row("rename refuses a fixed item's title",
      {1, SessionMenuTag::Rename, false, {Name("All Sessions"), Press("OK"), Press("Cancel")},
       {"Session Name", "Can't use this name.", "Session Name"}},
      two, 1);
  row("rename to its own name changes nothing",
      {1, SessionMenuTag::Rename, false, {Name("Default Backup Session")}, {"Session Name"}}, two, 1);
  row("duplicate of all sessions is refused",
      {-1, SessionMenuTag::Duplicate, false, {Press("OK")}, {"Can't duplicate the \"All\" Session."}}, two, 3);
  row("remove asks, OK removes and selects the one before",
      {1, SessionMenuTag::Remove, false, {Press("OK")},
       {"Are you sure you want to remove the current session \"Default Backup Session\" definitively?"}},
      {QStringLiteral("Default Sync Session")}, 0);
  row("remove cancelled keeps the session",
      {1, SessionMenuTag::Remove, false, {Press("Cancel")},
       {"Are you sure you want to remove the current session \"Default Backup Session\" definitively?"}},
      two, 1);
  row("sort applied takes the dragged order",
      {0, SessionMenuTag::Sort, false, {DragThirdFirst("Apply")}, {"Sort Sessions"}},
      {QStringLiteral("Copy"), QStringLiteral("Default Sync Session"), QStringLiteral("Default Backup Session")}, 1);
  row("sort cancelled keeps the order",
      {0, SessionMenuTag::Sort, false, {DragThirdFirst("Cancel")}, {"Sort Sessions"}},
      two + QStringList{QStringLiteral("Copy")}, 0);
}

void SessionPopUpTest::Commands() {
  QFETCH(std::shared_ptr<Command>, command);
  QFETCH(QStringList, names);
  QFETCH(int, selected);
  LaunchedProgram program;
  PlistDict& root = program.document();
  // The sort rows start from three sessions, so that a drag has somewhere to go.
  if (command->tag == SessionMenuTag::Sort) NewSession(root, "Copy");
  program.window.SetDocumentSessions();
  const std::int64_t first = command->selectFirst < 0 ? SessionCount(root) + 1 : command->selectFirst;
  if (first != root.GetInt("sessionIndex")) program.window.ChooseSession(static_cast<int>(first), false);
  QCOMPARE(root.GetInt("sessionIndex"), first);

  DialogScript script;
  for (auto& answer : command->answers) script.Then(answer);
  program.window.ChooseSession(MenuIndex(root, command->tag), command->alt);
  QVERIFY(script.Done());
  QCOMPARE(script.seen, command->expectedTexts);
  QCOMPARE(Names(root), names);
  QCOMPARE(root.GetInt("sessionIndex"), std::int64_t{selected});
  QCOMPARE(program.window.sessionPopUp()->currentIndex(), selected);
}

static RegisterUiTests<SessionPopUpTest> registered;

}  // namespace marigold::testing

#include "session_popup_test.moc"
