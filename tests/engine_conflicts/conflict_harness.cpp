#include "conflict_harness.h"

#include "model/document_model.h"

namespace marigold::conflicts_test {

ConflictRun::ConflictRun(conflicts_test::Task task, bool exact) {
  preferences.Set("prefOnError", 2);
  document = run_test::MakeDocument({{A(), B(), static_cast<int>(task), exact}});
}

void ConflictRun::SetRule(const std::string& key, std::int64_t value) {
  GetSessionDict(document, 0)->GetDict("conflictsDict")->Set(key, value);
}

std::int64_t ConflictRun::Run(int executedBy) {
  proxy.asked.clear();
  return RunHarness::Run(0, executedBy).state().gStartSyncDateTimeUTC;
}

std::int64_t ConflictRun::RecordedConflictsSkipped() const {
  const PlistArray& sessions = Sessions();
  if (sessions.empty()) return -1;
  const PlistArray* tasks = sessions.front().AsDict()->GetArray("logTaskArray");
  if (tasks == nullptr || tasks->empty()) return -1;
  return tasks->front().AsDict()->GetInt("gConflictsSkipped");
}

}  // namespace marigold::conflicts_test
