// Run services a test can steer: each answer is stated by the test, or handed to a real part
// (a FolderGuard, an ExactSyncIndex, the session's filters) when the test plugs one in; and the
// calls a person could not see (phases, index questions, the restore list) are recorded.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "engine/run_services.h"

namespace marigold {

class ExactSyncIndex;
class FolderGuard;
class SessionFilters;

// Every role of the run in one object, so one fake steers them all and hands itself to the engine
// as its RunServices.
class FakeServices : public RunServices,
                     public FolderChecks,
                     public ItemFilter,
                     public ExactIndexStore,
                     public TaskPlanner,
                     public SessionHooks,
                     public RunLog {
 public:
  FakeServices();
  FakeServices(const FakeServices&) = delete;
  FakeServices& operator=(const FakeServices&) = delete;

  // Real parts that take over their hooks when set; the test owns them.
  FolderGuard* guard = nullptr;      // validation, privileges, links, unlocking, restore list
  ExactSyncIndex* exactIndex = nullptr;  // the exact-sync index
  SessionFilters* filters = nullptr;  // exclusions and filters, rebuilt as each session starts
  bool multiFromSession = false;     // the multiple list is the session's own

  // Stated answers, used while no real part is set.
  std::vector<std::string> invalidSources;       // FoldersAreValid refuses these sources
  std::map<std::string, int> privilegeProblems;  // CheckPrivilegesOnFiles by source
  std::set<std::string> indexed;                 // paths the last exact run recorded
  std::set<std::string> excluded;
  std::optional<std::string> subFolderName;
  std::function<std::optional<std::string>(RunState&, const std::string& source)> subFolderNamer;
  std::map<std::int64_t, std::vector<std::pair<std::string, std::string>>> multiRows;  // by session
  std::function<void(std::int64_t session, int which)> onScript;

  // Records: "<phase> s<session>" (validate, mount, before, after, unmount) and "log"; the paths
  // asked about in the index; the task records given to the index; "restore <a> <b>" and
  // "release <path>" in the order the restore list heard them.
  std::vector<std::string> calls;
  std::vector<std::string> indexQuestions;
  std::vector<PlistDict> indexRecords;
  std::vector<std::string> restoreCalls;

  void Bind(EngineContext& context) override;
  void SessionStarts(RunState& state, const PlistDict& session) override;
  bool FoldersAreValid(RunState& state, const std::string& source, const std::string& dest, int check) override;
  void MakeItemsToDontCopyList(RunState& state) override;
  int CheckPrivilegesOnFiles(RunState& state, const std::string& source, const std::string& dest, int mode) override;
  bool TryResolveSymLinkFile(RunState& state, std::string& path, ItemAttributes& attributes, bool& link) override;
  bool UnlockChain(RunState& state, const std::string& item, const std::string& mainFolder, int check) override;
  bool RestoreOriginalAttr(RunState& state, const std::string& pathA, const std::string& pathB) override;
  void RemoveItemOKFromRestore(RunState& state, const std::string& path) override;
  bool IsToBeExcluded(RunState& state, const std::string& path) override;
  bool IsToBeFiltered(RunState& state, const std::string& path, const ItemAttributes& attributes) override;
  bool ExactSyncFileExists(RunState& state, int which) override;
  bool ItWasExixting(RunState& state, const std::string& path, int where) override;
  bool WriteExactSyncIndex(RunState& state, const PlistDict& taskRecord, int which) override;
  std::optional<std::string> GetDestSubFolderName(RunState& state, const std::string& source) override;
  PlistArray ExecutiveMultiArray(RunState& state, const PlistDict& session) override;
  bool MountAllVolumesForSession(RunState& state, const PlistDict& session) override;
  void UnmountAllVolumesForSession(RunState& state, const PlistDict& session) override;
  void ExecuteAppleScript(RunState& state, const PlistDict& session, int which) override;
  void MakeLog(RunState& state) override;

 private:
  void Record(const char* what, const RunState& state);
};

}  // namespace marigold
