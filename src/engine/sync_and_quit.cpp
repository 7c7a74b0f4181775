#include "engine/sync_and_quit.h"

#include <utility>

#include "util/strings_table.h"

namespace marigold {

std::string SyncAndQuitText(int seconds, bool first) {
  // The first text says "Sync and Quit", the ticks "Sync And Quit": both wordings are kept.
  std::string text = GLS(first ? "Starting Sync and Quit in %d seconds..." : "Starting Sync And Quit in %d seconds...");
  if (auto at = text.find("%d"); at != std::string::npos) text.replace(at, 2, std::to_string(seconds));
  return text;
}

SyncAndQuitCountdown::SyncAndQuitCountdown(Clock clock) : mClock(std::move(clock)) {}

std::string SyncAndQuitCountdown::PrepareToExecuteSyncAndQuit(int executedBy) {
  mIsStarting = true;
  mIsExecuting = false;
  mExecutedBy = executedBy;
  mStartTime = mClock();
  return SyncAndQuitText(kCountdownSeconds, true);
}

SyncAndQuitCountdown::Tick SyncAndQuitCountdown::ExecuteSyncAndQuit() {
  Tick tick;
  if (!mIsStarting) return tick;
  const int left = kCountdownSeconds - static_cast<int>(mClock() - mStartTime);
  if (left > 0) {
    tick.text = SyncAndQuitText(left, false);
    return tick;
  }
  mIsStarting = false;
  mIsExecuting = true;
  tick.startRun = true;
  return tick;
}

void SyncAndQuitCountdown::StopSyncAndQuit() {
  mIsStarting = false;
  mIsExecuting = false;
}

bool SyncAndQuitCountdown::ConcludeRun(bool userPressedStop) {
  const bool quit = mIsExecuting && !userPressedStop;
  mIsExecuting = false;
  return quit;
}

}  // namespace marigold
