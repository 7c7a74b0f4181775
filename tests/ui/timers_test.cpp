// The console's timer button and the per-user lock its timers hold, on a clock that stands still.
#include <QSignalSpy>
#include <QToolButton>
#include <QtTest>
#include <filesystem>

#include "app/scheduler_lock.h"
#include "model/document_model.h"
#include "support/fixed_clock.h"
#include "support/tree_values.h"
#include "ui/console_timers.h"
#include "ui_fixture.h"
#include "ui_tests.h"
#include "util/quillon_additions.h"

namespace marigold::testing {

class TimersTest : public QObject {
  Q_OBJECT
 private slots:
  void ButtonShowsTheTimersState_data();
  void ButtonShowsTheTimersState();
  void TimersStayOffWhileAnotherProgramFiresThem();
  void DueTimerRunsUnattendedAndEndsInTheConsole();
};

namespace {

constexpr double kTuesdayNine = 1773133200;          // 10 March 2026, 09:00 UTC
constexpr double kTuesdayHalfPastTwo = 1773153000;   // the same day, 14:30

// Session 0 with one confirmed one-shot timer row at 14:30, its master box as given.
void SetTimer(LaunchedProgram& program, bool on) {
  PlistDict row = DefaultTimerRow(DateFromUnixSeconds(kTuesdayHalfPastTwo));
  row.Set("valid", 1);
  PlistDict* timers = GetSessionDict(program.document(), 0)->GetDict("timerDict");
  timers->Set("timerOn", on ? 1 : 0);
  (*timers->GetArray("timerArray"))[0] = PlistValue(std::move(row));
}

}  // namespace

void TimersTest::ButtonShowsTheTimersState_data() {
  QTest::addColumn<bool>("syncAndQuit");
  QTest::addColumn<bool>("timersOn");
  QTest::addColumn<bool>("enabled");
  QTest::addColumn<bool>("checking");
  QTest::addColumn<QString>("toolTip");
  QTest::newRow("sync-and-quit") << true << true << false << false
                                 << QStringLiteral("Temporary off because of the SyncAndQuit");
  QTest::newRow("timers off") << false << false << true << false << QStringLiteral("Go to the Timer panel");
  QTest::newRow("one planned") << false << true << true << true << QStringLiteral("Next Timer: 10 03 2026 - 02:30");
}

void TimersTest::ButtonShowsTheTimersState() {
  QFETCH(bool, syncAndQuit);
  QFETCH(bool, timersOn);
  LaunchedProgram program;
  FixedClock clock(kTuesdayNine, "UTC");
  program.window.UseClock(clock);
  SetTimer(program, timersOn);
  program.app.preferences().dict().Set("prefSyncAndQuit", syncAndQuit ? 1 : 0);
  program.window.PlanTimers();
  QTEST(program.window.timerButton()->isEnabled(), "enabled");
  QTEST(program.window.timers()->checking(), "checking");
  QTEST(program.window.timerButton()->toolTip(), "toolTip");
}

void TimersTest::TimersStayOffWhileAnotherProgramFiresThem() {
  LaunchedProgram program;
  FixedClock clock(kTuesdayNine, "UTC");
  program.window.UseClock(clock);
  SetTimer(program, true);
  auto daemon = std::make_unique<SchedulerLock>();
  QVERIFY(daemon->Acquire("marigold daemon"));

  DialogScript script;
  script.Then([](QWidget* box) { Click(box, QStringLiteral("OK")); });
  program.window.PlanTimers();
  QTRY_VERIFY(script.Done());
  QVERIFY(script.seen.first().contains(QStringLiteral("marigold daemon, process")));
  QVERIFY(!program.window.timers()->checking());
  QVERIFY(program.window.timerButton()->toolTip().contains(QStringLiteral("marigold daemon")));

  // Once the daemon has gone the window takes the lock over, and holds it against the next one.
  daemon.reset();
  program.window.PlanTimers();
  QVERIFY(program.window.timers()->checking());
  SchedulerLock next;
  QVERIFY(!next.Acquire("marigold daemon"));
}

void TimersTest::DueTimerRunsUnattendedAndEndsInTheConsole() {
  LaunchedProgram program;
  FixedClock clock(kTuesdayHalfPastTwo, "UTC");
  program.window.UseClock(clock);
  const std::string a = program.home.root() + "/A", b = program.home.root() + "/B";
  trees::Build(a, {{"report.txt", "due"}});
  std::filesystem::create_directories(b);
  PlistDict& session = *GetSessionDict(program.document(), 0);
  session.GetDict("consoleDict")->Set("topFolder", a);
  session.GetDict("consoleDict")->Set("bottomFolder", b);
  session.GetDict("settingsDict")->Set("settTask", 2);
  // A run by hand would ask first; a timer's asks nobody.
  program.app.preferences().dict().Set("prefAskConfirmation", 1);
  SetTimer(program, true);
  program.window.PlanTimers();

  QSignalSpy finished(&program.window, &ConsoleWindow::runFinished);
  program.window.timers()->CheckNow();
  QVERIFY(program.window.IsCopying());
  QVERIFY(finished.wait(60000));
  QVERIFY(program.window.lastOutcome()->ending == RunEnding::kCompleted);
  QVERIFY(trees::Read(b) == trees::Tree({{"report.txt", "due"}}));
  QTRY_COMPARE(program.window.timerButton()->toolTip(), QStringLiteral("Go to the Timer panel"));
  const PlistDict* entry = program.window.timers()->scheduler().schedule().executiveTimerArray()[0].AsDict();
  QCOMPARE(entry->GetInt("state"), std::int64_t{kTimerDone});
}

static RegisterUiTests<TimersTest> registered;

}  // namespace marigold::testing

#include "timers_test.moc"
