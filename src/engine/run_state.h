// Everything one run knows and counts: the stop flag, the session's switches, the task and
// copy counters per side, the run tallies, and the records the run log reads. One RunState lives
// for the life of the engine and is reset at the start of each run. Only the worker thread writes
// it, except mIsCopying (cleared by the main thread to stop) and runItemsToDo (read by the
// progress display); both are atomics.
#pragma once

#include <atomic>
#include <cstdint>
#include <optional>
#include <string>
#include <unordered_set>
#include <vector>

#include "engine/scan_node.h"
#include "options/session_switches.h"
#include "util/plist_value.h"

namespace marigold {

// Who started a run.
enum ExecutedBy : int { kExecutedByUser = 1, kExecutedByTimer = 2, kExecutedBySyncAndQuit = 3 };

// Counters of one task's scan, reset before each task.
struct ScanCounters {
  std::int64_t gAFoldersScanned = 0;
  std::int64_t gAFilesScanned = 0;
  std::int64_t gBFoldersScanned = 0;
  std::int64_t gBFilesScanned = 0;
};

// What the copy did on one side; the log keys are "gA" or "gB" followed by the field name.
struct SideCopyCounters {
  std::int64_t FoldersCreated = 0;
  std::int64_t FilesCopied = 0;
  std::int64_t FilesReplaced = 0;
  std::int64_t FilesRenamed = 0;
  std::int64_t FoldersDeleted = 0;
  std::int64_t FilesDeleted = 0;
  std::int64_t FoldersTrashed = 0;
  std::int64_t FilesTrashed = 0;
  std::int64_t ItemVisible = 0;
  std::int64_t ItemInvisible = 0;
};

// Items with something to do over the whole run, by copy mode.
struct RunTallies {
  std::atomic<std::int64_t> runItemsToDo{0};  // counted down while copying
  std::int64_t runItemsTotal = 0;
  std::int64_t runToCopyAToB = 0;    // modes 2 and 4
  std::int64_t runToCopyBToA = 0;    // modes 3 and 5
  std::int64_t runToDelete = 0;      // modes 6 and 7
  std::int64_t runMetadataAToB = 0;  // mode 8
  std::int64_t runMetadataBToA = 0;  // mode 9
  std::int64_t runNothing = 0;       // mode 1
  std::int64_t runSwitchedOff = 0;   // items the user switched off in the preview (negative modes)

  // Adds `delta` to the tally that `mode` belongs to (nothing for modes outside 1..9).
  void Count(int mode, std::int64_t delta);
  void Reset();
};

struct RunState {
  // --- the run -----------------------------------------------------------------------------
  std::atomic<bool> mIsCopying{false};
  // A dry run only looks: no file, folder, date, lock, permission or index may change, and no
  // script runs. Every writer of the run asks this, not the driver.
  bool mDryRun = false;
  bool mUserPressedStop = false;
  bool gTerminateAfterSync = false;
  int mExecutedBy = kExecutedByUser;
  bool mEuidIsRoot = false;
  PlistDate gStartSyncDateTime;
  std::int64_t gStartSyncDateTimeUTC = 0;  // the run's start, Unix seconds (backup dates)
  PlistDate gEndSyncDateTime;
  std::int64_t gModificationDelta = 0;  // seconds of tolerance when comparing dates
  bool gMakeDetailedLog = false;
  bool gMakeErrorsLog = false;
  std::int64_t gIsOnError = 3;  // prefOnError, read at the start of each session
  std::int64_t gGlobalItemsScanned = 0;
  std::int64_t gGlobalConflictsSkipped = 0;
  std::int64_t gGlobalError = 0;
  bool gAtLeastOneItemDone = false;
  std::unordered_set<std::string> gItemsDeleted;  // paths deleted in this run
  RunTallies tallies;

  // --- the session -------------------------------------------------------------------------
  std::int64_t sessionIndex = 0;
  SessionSwitches session;

  // --- the task ----------------------------------------------------------------------------
  std::string gSourceFolder;
  std::string gDestFolder;
  std::int64_t gTotMulti = 0;
  std::int64_t gTotMultiDone = 0;
  ScanCounters scan;
  std::int64_t gItemsToDo = 0;
  std::int64_t gConflictsSkipped = 0;
  std::int64_t gTotError = 0;
  SideCopyCounters gA;
  SideCopyCounters gB;
  std::string gDetailedLogText;
  std::string gTrashDetailedLogText;
  std::string mErrString;  // the last error message (SetErrMsg)
  std::optional<std::int64_t> mainSourceFolderBackupDate;  // Unix seconds
  std::optional<std::int64_t> mainDestFolderBackupDate;
  bool gCompareExactSyncAtIndex = false;
  std::vector<std::string> restoreBackupDateArray;
  std::unordered_set<std::string> bootItemsToDontCopyArray;
  std::unordered_set<std::string> bootFoldersToCopyEmptyArray;

  // --- the trees and records ---------------------------------------------------------------
  std::vector<TaskTree> runTaskTrees;
  std::vector<std::vector<std::string>> runExactIndexAdditions;  // parallel to runTaskTrees
  PlistArray logSessionArray;

  SideCopyCounters& Side(bool sideA) { return sideA ? gA : gB; }
  bool IsRunOn() const { return mIsCopying.load(std::memory_order_relaxed); }
};

}  // namespace marigold
