// The roles a real run plays with the session's options: the folder checks and unlocking, the
// filters and exclusions, the exact-sync index, the task plan (dated sub-folder, multiple list)
// and the run log. This is the glue that hands the options to the engine; volumes and scripts
// are plugged into the same object by their own parts.
#pragma once

#include <string>

#include "engine/exact_sync_index.h"
#include "engine/folder_guard.h"
#include "engine/run_services.h"
#include "logging/run_log_writer.h"
#include "options/filters.h"

namespace marigold {

// The session's filters and exclusions as the run's item filter.
class SessionItemFilter : public ItemFilter {
 public:
  void SessionStarts(RunState& state, const PlistDict& session) override;
  bool IsToBeExcluded(RunState& state, const std::string& path) override;
  bool IsToBeFiltered(RunState& state, const std::string& path, const ItemAttributes& attributes) override;

 private:
  SessionFilters mFilters;
};

// The exact-sync index kept in the support folder, as the run's index role.
class SessionExactIndex : public ExactIndexStore {
 public:
  explicit SessionExactIndex(const std::string& indexFolder) : mIndex(indexFolder) {}
  void Bind(EngineContext& context) override { mIndex.Bind(context); }
  bool ExactSyncFileExists(RunState& state, int which) override;
  bool ItWasExixting(RunState& state, const std::string& path, int where) override;
  std::vector<std::string> IndexedRootNames(RunState& state, int where) override;
  bool WriteExactSyncIndex(RunState& state, const PlistDict& taskRecord, int mode) override;

 private:
  ExactSyncIndex mIndex;
};

// The dated destination sub-folder and the multiple list.
class SessionTaskPlanner : public TaskPlanner {
 public:
  std::optional<std::string> GetDestSubFolderName(RunState& state, const std::string& source) override;
  PlistArray ExecutiveMultiArray(RunState& state, const PlistDict& session) override;
};

class SessionRunServices : public RunServices {
 public:
  // `exactIndexFolder` is where the exact-sync index lives (the support folder's
  // "ExactSync Indexes"); `defaultLogFolder` is where logs go when the chosen log folder cannot
  // be made.
  explicit SessionRunServices(const std::string& exactIndexFolder, const std::string& defaultLogFolder = "");
  SessionRunServices(const SessionRunServices&) = delete;
  SessionRunServices& operator=(const SessionRunServices&) = delete;

  FolderGuard& guard() { return mGuard; }
  RunLogWriter& runLog() { return mLog; }

 private:
  FolderGuard mGuard;
  SessionItemFilter mFilter;
  SessionExactIndex mIndex;
  SessionTaskPlanner mPlanner;
  RunLogWriter mLog;
};

}  // namespace marigold
