// Sync-and-quit: at launch the program counts down ten seconds, then runs the current session and
// quits. The countdown is plain logic with an injected clock: the front end ticks it once a
// second and shows the texts it returns; pressing the main button during the countdown cancels.
#pragma once

#include <functional>
#include <string>

namespace marigold {

class SyncAndQuitCountdown {
 public:
  // Seconds since any fixed origin; a steady clock in the programs, a variable in tests.
  using Clock = std::function<double()>;
  static constexpr int kCountdownSeconds = 10;

  explicit SyncAndQuitCountdown(Clock clock);

  // Starts the countdown for a run by `executedBy` and returns the first text to show
  // ("Starting Sync and Quit in 10 seconds...").
  std::string PrepareToExecuteSyncAndQuit(int executedBy);

  struct Tick {
    bool startRun = false;  // the time is up: the countdown ended and the run starts now
    std::string text;       // what to show while seconds remain; empty when the run starts
  };
  // One tick of the one-second timer. Does nothing (startRun false, no text) when no countdown
  // is running.
  Tick ExecuteSyncAndQuit();
  // Cancels the countdown (and forgets that a run was to be followed by quitting).
  void StopSyncAndQuit();
  // Called once a run has concluded: whether the program quits now because sync-and-quit
  // started it and the user did not press Stop. Clears the executing state either way.
  bool ConcludeRun(bool userPressedStop);

  bool isStartingSyncAndQuit() const { return mIsStarting; }
  bool isExecutingSyncAndQuit() const { return mIsExecuting; }
  int executedBy() const { return mExecutedBy; }

 private:
  Clock mClock;
  bool mIsStarting = false;
  bool mIsExecuting = false;
  int mExecutedBy = 0;
  double mStartTime = 0;
};

// The localised countdown text with `seconds` in place of its "%d"; `first` selects the text
// shown when the countdown starts, else the one shown on each tick (they differ on purpose).
std::string SyncAndQuitText(int seconds, bool first);

}  // namespace marigold
