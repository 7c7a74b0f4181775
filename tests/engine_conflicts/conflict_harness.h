// Whole runs of one session on real temporary trees, with a proxy that answers the replace prompt
// from a script and keeps every request it was shown.
#pragma once

#include <cstdint>
#include <deque>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "engine/run_driver.h"
#include "platform/linux_file_system.h"
#include "support/temp_folder.h"
#include "support/tree_values.h"

namespace marigold::conflicts_test {

class AnsweringProxy : public AppkitProxy {
 public:
  int Alert(const AlertRequest& request) override {
    alerts.push_back(request);
    if (alertAnswers.empty()) return 0;
    const int answer = alertAnswers.front();
    alertAnswers.pop_front();
    return answer;
  }
  int AskReplace(const ReplaceRequest& request) override {
    asked.push_back(request);
    if (answers.empty()) return kReplaceResultSkip;
    const int answer = answers.front();
    answers.pop_front();
    return answer;
  }
  bool ShowPreview(std::vector<TaskTree>&) override { return true; }
  void Beep() override { ++beeps; }

  std::deque<int> answers;  // modal results, in order; Skip once they run out
  std::vector<ReplaceRequest> asked;
  std::deque<int> alertAnswers;  // buttons pressed, in order; the first button once they run out
  std::vector<AlertRequest> alerts;
  int beeps = 0;
};

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
  AnsweringProxy proxy;
  PlistDict preferences;
  PlistDict document;

 private:
  std::unique_ptr<RunDriver> mDriver;
};

}  // namespace marigold::conflicts_test
