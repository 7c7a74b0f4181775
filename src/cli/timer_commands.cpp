#include "cli/timer_commands.h"

#include <signal.h>
#include <syslog.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <cstdio>
#include <thread>

#include "app/run_controller.h"
#include "app/scheduler_lock.h"
#include "app/session_management.h"
#include "app/timer_scheduler.h"
#include "cli/commands.h"
#include "cli/terminal_proxy.h"
#include "model/document_model.h"
#include "platform/linux_file_system.h"
#include "scheduling/scheduling_list.h"
#include "scheduling/timer_schedule.h"

namespace marigold {
namespace {

int Refuse(const std::string& message) {
  std::fprintf(stderr, "marigold: %s\n", message.c_str());
  return kExitBadInput;
}

int Plan(MainApp& app, TerminalPrompts& prompts, const TimerCommandArgs& args) {
  if (args.days < 1) return Refuse("--days must be 1 or more");
  if (int status = ReadDocumentForCommand(app, prompts, args.document); status != kExitOk) return status;
  PlistDict& document = app.store().mainDict();
  std::int64_t index = document.GetInt("sessionIndex");
  if (args.allSessions) {
    index = SessionCount(document) + 1;
  } else if (args.sessionOption && args.sessionOption->count() > 0) {
    const std::optional<std::int64_t> found = FindSessionIndex(document, args.sessionName);
    if (!found) return Refuse("no session is called \"" + args.sessionName + "\"");
    index = *found;
  }
  TimerSchedule schedule(SystemClock());
  const PlanningInput input{&document, index, app.preferences().dict().GetInt("prefSyncAndQuit") != 0, args.days};
  schedule.GetExecutiveTimerArray(input, false);
  SchedulingList list(schedule.calendar());
  list.SetArray(&schedule.executiveTimerArray());
  if (list.RowCount() == 0) {
    std::printf(input.syncAndQuit ? "No timer runs while sync-and-quit is on.\n" : "No timer is planned.\n");
  }
  for (std::size_t row = 0; row < list.RowCount(); ++row) {
    std::printf("%s\t%s\t%s\t%s\t%s%s\n", list.Text(row, SchedulingColumn::kProgressive).c_str(),
                list.Text(row, SchedulingColumn::kStartDate).c_str(), list.Text(row, SchedulingColumn::kSessionName).c_str(),
                list.Text(row, SchedulingColumn::kState).c_str(), list.Text(row, SchedulingColumn::kErrors).c_str(),
                list.ShowsNextMark(row) ? "\tnext" : "");
  }
  std::fflush(stdout);
  return std::ferror(stdout) ? kExitFailed : kExitOk;
}

// The daemon's lines go to the system log, and with --verbose to standard error as well.
class DaemonLog : public SystemLog {
 public:
  explicit DaemonLog(bool echo) : mEcho(echo) {}
  void Write(int priority, const std::string& line) override {
    SyslogSystemLog().Write(priority, line);
    if (mEcho) std::fprintf(stderr, "marigold daemon: %s\n", line.c_str());
  }

 private:
  bool mEcho;
};

std::atomic<bool> gDaemonStopAsked{false};
std::atomic<RunController*> gDaemonRuns{nullptr};

extern "C" void StopDaemonOnSignal(int) {
  gDaemonStopAsked = true;
  // The run under way stops as Stop stops it; its log says so.
  if (RunController* runs = gDaemonRuns.load()) runs->Stop();
}

int Daemon(MainApp& app, TerminalPrompts& prompts, const TimerCommandArgs& args) {
  SchedulerLock lock;
  if (!lock.Acquire("marigold daemon")) {
    std::fprintf(stderr, "marigold: timers are already fired by %s\n", lock.HolderText().c_str());
    return kExitBadInput;
  }
  DaemonLog log(args.verbose);
  // By default the desktop program's last state: the template document.
  const std::string path = args.document.empty() ? app.paths().pathFileDocTemplate : args.document;
  // With no template yet, the launch's fresh document stands in until the desktop program saves one.
  const bool haveFile = !args.document.empty() || ::access(path.c_str(), F_OK) == 0;
  if (haveFile) {
    if (int status = ReadDocumentForCommand(app, prompts, path); status != kExitOk) return status;
  }

  LinuxFileSystem fs;
  TerminalProxy proxy(/*interactive=*/false, /*showProgress=*/false);
  RunController runs(app.paths(), fs, proxy);
  TimerScheduler scheduler(runs, app.store(), SystemClock(), log);
  scheduler.SetPreferences(app.preferences().dict());
  scheduler.WatchDocumentFile(path);

  gDaemonRuns = &runs;
  struct sigaction action {};
  action.sa_handler = StopDaemonOnSignal;
  sigemptyset(&action.sa_mask);
  ::sigaction(SIGTERM, &action, nullptr);
  ::sigaction(SIGINT, &action, nullptr);

  std::atomic<bool> runEnded{false};
  scheduler.SetRunEndedCallback([&runEnded](const RunOutcome&) { runEnded = true; });
  log.Write(LOG_NOTICE, "Firing the timers of \"" + path + "\".");
  scheduler.Replan();
  using Clock = std::chrono::steady_clock;
  auto nextCheck = Clock::now();
  while (!gDaemonStopAsked.load()) {
    if (Clock::now() >= nextCheck || runEnded.exchange(false)) {
      scheduler.Tick();
      nextCheck = Clock::now() + std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(kTimerCheckSeconds));
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(200));
  }
  scheduler.StopAndWait();
  gDaemonRuns = nullptr;
  log.Write(LOG_NOTICE, "Stopped firing timers.");
  return kExitOk;
}

}  // namespace

void AddTimerCommands(CLI::App& app, TimerCommandArgs& args) {
  args.plan = app.add_subcommand("plan", "Print the timer executions a document plans, as the scheduling list shows them");
  args.plan->add_option("DOCUMENT", args.document, "The session document")->required();
  args.plan->add_option("--days", args.days, "The horizon in days (default 1: the rest of today)");
  args.sessionOption = args.plan->add_option("--session", args.sessionName, "Only this session's timers");
  CLI::Option* all = args.plan->add_flag("--all", args.allSessions, "The timers of every session");
  args.sessionOption->excludes(all);

  args.daemon = app.add_subcommand("daemon", "Fire the timers of a document with no window open, until stopped");
  args.daemon->add_option("DOCUMENT", args.document, "The session document (default: the desktop program's last state)");
  args.daemon->add_flag("--verbose", args.verbose, "Also write what it does to standard error");
}

int ExecuteTimerCommand(MainApp& app, TerminalPrompts& prompts, const TimerCommandArgs& args) {
  if (args.plan && args.plan->parsed()) return Plan(app, prompts, args);
  return Daemon(app, prompts, args);
}

}  // namespace marigold
