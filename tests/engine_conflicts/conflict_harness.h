// Whole runs of one session on real temporary trees, with the run tests' proxy answering the
// replace prompt from a script and keeping every request it was shown.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "engine_run/run_harness.h"

namespace marigold::conflicts_test {

enum Task : std::int64_t { kSync = 1, kBackup = 2 };

// One session from side A to side B of a temporary folder, every rule at its default.
class ConflictRun {
 public:
  ConflictRun(Task task, bool exact);

  std::string A(const std::string& relative = {}) const;
  std::string B(const std::string& relative = {}) const;
  // Sets a key of the session's conflictsDict.
  void SetRule(const std::string& key, std::int64_t value);
  // Runs the session on this thread, started by `executedBy`; returns the run's start (the
  // backup date it gives what it brings into step).
  std::int64_t Run(int executedBy = kExecutedByUser);

  RunState& state() { return mDriver->state(); }
  // The conflicts the last run skipped, as its task record keeps them.
  std::int64_t RecordedConflictsSkipped() const;

  TempFolder temp;
  LinuxFileSystem fs;
  run_test::ScriptedProxy proxy;  // Skip and the first button once its answers run out
  PlistDict preferences;
  PlistDict document;

 private:
  RunServices mServices;  // every role at its default
  std::unique_ptr<RunDriver> mDriver;
};

}  // namespace marigold::conflicts_test
