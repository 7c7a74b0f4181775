// The timing rules of a run: how often the count of items still to do is refreshed, and the
// sync-and-quit countdown; plus how a session's dictionary turns into the run's switches.
#include <gtest/gtest.h>

#include "engine/progress_interval.h"
#include "options/session_switches.h"
#include "engine/sync_and_quit.h"
#include "support/run_harness.h"

namespace marigold::run_test {
namespace {

TEST(ConsoleUpdateInterval, GrowsWithTheRunAtItsBoundaries) {
  const std::pair<std::int64_t, double> table[] = {
      {0, 0.0},    {500, 0.0},  {501, 0.5},  {1000, 0.5},     {1001, 1.0},
      {2000, 1.0}, {2001, 2.0}, {1000000, 2.0}, {-1, 0.0},
  };
  for (const auto& [items, interval] : table) EXPECT_EQ(ConsoleUpdateInterval(items), interval) << items;
}

TEST(ItemsToDoRefresher, ShowsTheCountOnlyWhenItChanged) {
  ScriptedProxy proxy;
  RunTallies tallies;
  tallies.runItemsTotal = 5;
  tallies.runItemsToDo = 5;
  ItemsToDoRefresher refresher(proxy, tallies);

  EXPECT_TRUE(refresher.UpdateItemsToDoField());
  EXPECT_FALSE(refresher.UpdateItemsToDoField());
  tallies.runItemsToDo = 3;
  EXPECT_TRUE(refresher.UpdateItemsToDoField());
  refresher.ResetLastShown();
  EXPECT_TRUE(refresher.UpdateItemsToDoField());

  using Shown = std::vector<std::pair<std::int64_t, std::int64_t>>;
  EXPECT_EQ(proxy.ItemsToDo(), (Shown{{5, 5}, {3, 5}, {3, 5}}));
}

TEST(SyncAndQuit, CountsDownTenSecondsThenStartsTheRun) {
  double now = 100.0;
  SyncAndQuitCountdown countdown([&] { return now; });

  EXPECT_EQ(countdown.PrepareToExecuteSyncAndQuit(kExecutedBySyncAndQuit), "Starting Sync and Quit in 10 seconds...");
  EXPECT_TRUE(countdown.isStartingSyncAndQuit());
  EXPECT_EQ(countdown.executedBy(), kExecutedBySyncAndQuit);

  const std::pair<double, const char*> ticks[] = {
      {100.9, "Starting Sync And Quit in 10 seconds..."},
      {101.0, "Starting Sync And Quit in 9 seconds..."},
      {109.99, "Starting Sync And Quit in 1 seconds..."},
  };
  for (const auto& [time, text] : ticks) {
    now = time;
    SyncAndQuitCountdown::Tick tick = countdown.ExecuteSyncAndQuit();
    EXPECT_FALSE(tick.startRun) << time;
    EXPECT_EQ(tick.text, text) << time;
  }
  now = 110.0;
  SyncAndQuitCountdown::Tick last = countdown.ExecuteSyncAndQuit();
  EXPECT_TRUE(last.startRun);
  EXPECT_TRUE(last.text.empty());
  EXPECT_FALSE(countdown.isStartingSyncAndQuit());
  EXPECT_TRUE(countdown.isExecutingSyncAndQuit());
  EXPECT_FALSE(countdown.ExecuteSyncAndQuit().startRun);  // one run only

  EXPECT_FALSE(countdown.ConcludeRun(true));  // a Stop keeps the program open
  EXPECT_FALSE(countdown.isExecutingSyncAndQuit());
}

TEST(SyncAndQuit, TheMainButtonCancelsTheCountdown) {
  double now = 0;
  SyncAndQuitCountdown countdown([&] { return now; });
  countdown.PrepareToExecuteSyncAndQuit(kExecutedBySyncAndQuit);
  now = 4;
  countdown.StopSyncAndQuit();
  now = 20;
  EXPECT_FALSE(countdown.ExecuteSyncAndQuit().startRun);
  EXPECT_FALSE(countdown.ConcludeRun(false));
}

TEST(SessionSwitches, FiltersAndExclusionsAreOnOnlyWithAnActiveRow) {
  PlistDict inactiveFilter{{"onOff", 1}, {"filterNameField", "no criterion"}};
  PlistDict activeFilter{{"onOff", 1}, {"filterSizeOn", 0}, {"filterOwnerOn", 1}};
  PlistDict switchedOff{{"onOff", 0}, {"filterFileNameOn", 1}};
  PlistDict session{
      {"filterDict", PlistDict{{"filterOn", 1}, {"filterArray", PlistArray{inactiveFilter, switchedOff}}}},
      {"excludeDict", PlistDict{{"excludeOn", 1},
                                {"excludeArray", PlistArray{PlistDict{{"onOff", 1}, {"itemToExclude", ""}},
                                                            PlistDict{{"onOff", 0}, {"itemToExclude", "/x"}}}}}},
  };
  SessionSwitches s;
  ReadSessionSwitches(session, s);
  EXPECT_FALSE(s.gIsFilterOn);
  EXPECT_FALSE(s.gIsExcludeOn);

  session.GetDict("filterDict")->GetArray("filterArray")->push_back(activeFilter);
  session.GetDict("excludeDict")->GetArray("excludeArray")->push_back(PlistDict{{"onOff", 1}, {"itemToExclude", "/y"}});
  ReadSessionSwitches(session, s);
  EXPECT_TRUE(s.gIsFilterOn);
  EXPECT_TRUE(s.gIsExcludeOn);
  EXPECT_EQ(ExecutiveFilterArray(session), (PlistArray{activeFilter}));
  EXPECT_EQ(ExecutiveExcludeArray(session), (PlistArray{"/y"}));

  session.GetDict("filterDict")->Set("filterOn", 0);
  ReadSessionSwitches(session, s);
  EXPECT_FALSE(s.gIsFilterOn);
}

}  // namespace
}  // namespace marigold::run_test
