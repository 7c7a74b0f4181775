// Whole runs of one session on real temporary trees, with the replace prompt answered from a
// script and every request it was shown kept.
#pragma once

#include <cstdint>
#include <string>

#include "support/run_harness.h"

namespace marigold::conflicts_test {

enum Task : std::int64_t { kSync = 1, kBackup = 2 };

// One session from side A to side B, every rule at its default; errors are counted and the run
// goes on.
class ConflictRun : public run_test::RunHarness {
 public:
  ConflictRun(conflicts_test::Task task, bool exact);

  // Sets a key of the session's conflictsDict.
  void SetRule(const std::string& key, std::int64_t value);
  // Runs the session on this thread, started by `executedBy`, with the prompts of earlier runs
  // forgotten; returns the run's start (the backup date it gives what it brings into step).
  std::int64_t Run(int executedBy = kExecutedByUser);

  RunState& state() { return driver().state(); }
  // The conflicts the last run skipped, as its task record keeps them; -1 without a task record.
  std::int64_t RecordedConflictsSkipped() const;
};

}  // namespace marigold::conflicts_test
