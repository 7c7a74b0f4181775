#include "engine/run_services.h"

#include <algorithm>

#include "engine/run_state.h"

namespace marigold {

bool FolderChecks::FoldersAreValid(RunState&, const std::string&, const std::string&, int) { return true; }
void FolderChecks::MakeItemsToDontCopyList(RunState&) {}
int FolderChecks::CheckPrivilegesOnFiles(RunState&, const std::string&, const std::string&, int) { return 0; }
int FolderChecks::CheckScannedPrivileges(RunState& state, const std::string& source, const std::string& dest,
                                         int copyMode, const ItemAttributes*, const ItemAttributes*) {
  return CheckPrivilegesOnFiles(state, source, dest, copyMode);
}
std::string FolderChecks::LastPrivilegeProblem() { return {}; }
bool FolderChecks::TryResolveSymLinkFile(RunState&, std::string&, ItemAttributes&, bool&) { return true; }
bool FolderChecks::UnlockChain(RunState&, const std::string&, const std::string&, int) { return false; }
bool FolderChecks::UnlockWholeItem(RunState&, const std::string&) { return true; }
bool FolderChecks::RestoreOriginalAttr(RunState&, const std::string&, const std::string&) { return true; }
void FolderChecks::RemoveItemOKFromRestore(RunState&, const std::string&) {}

void ItemFilter::SessionStarts(RunState&, const PlistDict&) {}
bool ItemFilter::IsToBeExcluded(RunState&, const std::string&) { return false; }
bool ItemFilter::IsToBeFiltered(RunState&, const std::string&, const ItemAttributes&) { return false; }

bool ExactIndexStore::ExactSyncFileExists(RunState&, int) { return false; }
bool ExactIndexStore::ItWasExixting(RunState&, const std::string&, int) { return false; }
std::vector<std::string> ExactIndexStore::IndexedRootNames(RunState&, int) { return {}; }
bool ExactIndexStore::WriteExactSyncIndex(RunState&, const PlistDict&, int) { return true; }

std::optional<std::string> TaskPlanner::GetDestSubFolderName(RunState&, const std::string&) { return std::nullopt; }
PlistArray TaskPlanner::ExecutiveMultiArray(RunState&, const PlistDict&) { return {}; }

void SessionHooks::GetExecutiveAppleScripts(RunState&, const PlistDict&, std::int64_t) {}
bool SessionHooks::MountAllVolumesForSession(RunState&, const PlistDict&) { return true; }
void SessionHooks::UnmountAllVolumesForSession(RunState&, const PlistDict&) {}
void SessionHooks::ExecuteAppleScript(RunState&, const PlistDict&, int) {}
bool SessionHooks::IsOnUmountedVolume(RunState&, const std::string&) { return false; }

void RunLog::MakeLog(RunState&) {}

namespace {

// The "nothing to do here" of every role, shared by every run: the defaults keep no state.
class NothingToDo : public FolderChecks,
                    public ItemFilter,
                    public ExactIndexStore,
                    public TaskPlanner,
                    public SessionHooks,
                    public RunLog {};

NothingToDo& Defaults() {
  static NothingToDo defaults;
  return defaults;
}

}  // namespace

RunServices::RunServices()
    : folders(&Defaults()), filter(&Defaults()), index(&Defaults()), tasks(&Defaults()), hooks(&Defaults()),
      log(&Defaults()) {}

void RunServices::BindRoles(EngineContext& context) {
  std::vector<RunRole*> bound;
  for (RunRole* role : std::initializer_list<RunRole*>{folders, filter, index, tasks, hooks, log}) {
    if (role == &static_cast<RunRole&>(Defaults()) || std::find(bound.begin(), bound.end(), role) != bound.end())
      continue;
    role->Bind(context);
    bound.push_back(role);
  }
}

}  // namespace marigold
