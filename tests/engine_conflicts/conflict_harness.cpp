#include "conflict_harness.h"

#include "model/document_model.h"
#include "app/preferences.h"

namespace marigold::conflicts_test {

ConflictRun::ConflictRun(Task task, bool exact)
    : preferences(GetDefaultPreferencesDict("/nonexistent/log folder", false)) {
  preferences.Set("prefPreview", 0);
  preferences.Set("prefOnError", 2);
  trees::Build(A(), {});
  trees::Build(B(), {});
  document = PlistDict{{"sessionsArray", PlistArray()}, {"fileVersion", kFileVersion}, {"sessionIndex", 0}};
  AddSession(task, "Conflicts", document);
  PlistDict& session = *GetSessionDict(document, 0);
  session.GetDict("consoleDict")->Set("topFolder", A());
  session.GetDict("consoleDict")->Set("bottomFolder", B());
  session.GetDict("settingsDict")->Set("settExact", exact ? 1 : 0);
}

std::string ConflictRun::A(const std::string& relative) const { return temp.Join(relative.empty() ? "A" : "A/" + relative); }
std::string ConflictRun::B(const std::string& relative) const { return temp.Join(relative.empty() ? "B" : "B/" + relative); }

void ConflictRun::SetRule(const std::string& key, std::int64_t value) {
  GetSessionDict(document, 0)->GetDict("conflictsDict")->Set(key, value);
}

std::int64_t ConflictRun::Run(int executedBy) {
  proxy.asked.clear();
  mDriver = std::make_unique<RunDriver>(document, preferences, fs, proxy, mServices);
  mDriver->ExecuteSyncBackup(0, executedBy);
  return mDriver->state().gStartSyncDateTimeUTC;
}

std::int64_t ConflictRun::RecordedConflictsSkipped() const {
  const PlistArray& sessions = mDriver->state().logSessionArray;
  if (sessions.empty()) return -1;
  const PlistArray* tasks = sessions.front().AsDict()->GetArray("logTaskArray");
  if (tasks == nullptr || tasks->empty()) return -1;
  return tasks->front().AsDict()->GetInt("gConflictsSkipped");
}

}  // namespace marigold::conflicts_test
