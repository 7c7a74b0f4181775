#include "support/run_harness.h"

#include "model/document_model.h"
#include "app/preferences.h"

namespace marigold::run_test {

PlistDict MakeDocument(const std::vector<SessionPlan>& sessions) {
  PlistDict root{{"sessionsArray", PlistArray()}, {"fileVersion", kFileVersion}, {"sessionIndex", 0}};
  for (std::size_t i = 0; i < sessions.size(); ++i) {
    const SessionPlan& plan = sessions[i];
    AddSession(plan.task, "Session " + std::to_string(i + 1), root);
    PlistDict& session = *GetSessionDict(root, static_cast<std::int64_t>(i));
    session.GetDict("consoleDict")->Set("topFolder", plan.source);
    session.GetDict("consoleDict")->Set("bottomFolder", plan.dest);
    session.GetDict("settingsDict")->Set("settExact", plan.exact ? 1 : 0);
    session.GetDict("settingsDict")->Set("settCreateDestFolder", plan.createDestFolder ? 1 : 0);
    session.GetDict("multiDict")->Set("multiOn", plan.multi ? 1 : 0);
  }
  return root;
}

RunHarness::RunHarness() : preferences(GetDefaultPreferencesDict("/nonexistent/log folder", false)) {
  preferences.Set("prefLogKind", 2);
  preferences.Set("prefOnError", 3);
  preferences.Set("prefPreview", 0);
  trees::Build(A(), {});
  trees::Build(B(), {});
}

RunDriver& RunHarness::Run(std::int64_t sessionIndex, int executedBy, FileSystem* fs) {
  mErrors.clear();
  mDriver = std::make_unique<RunDriver>(document, preferences, fs ? *fs : realFs, proxy, services);
  mDriver->SetErrorObserver([this](const std::string& message) { mErrors.push_back(message); });
  mDriver->ExecuteSyncBackup(sessionIndex, executedBy);
  return *mDriver;
}

}  // namespace marigold::run_test
