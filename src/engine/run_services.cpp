#include "engine/run_services.h"

#include "engine/run_state.h"

namespace marigold {

void RunServices::Bind(EngineContext&) {}
void RunServices::SessionStarts(RunState&, const PlistDict&) {}
bool RunServices::FoldersAreValid(RunState&, const std::string&, const std::string&, int) { return true; }
void RunServices::MakeItemsToDontCopyList(RunState&) {}
std::string RunServices::LastPrivilegeProblem() { return {}; }
int RunServices::CheckPrivilegesOnFiles(RunState&, const std::string&, const std::string&, int) { return 0; }
bool RunServices::TryResolveSymLinkFile(RunState&, std::string&, ItemAttributes&, bool&) { return true; }
bool RunServices::UnlockChain(RunState&, const std::string&, const std::string&, int) { return false; }
bool RunServices::UnlockWholeItem(RunState&, const std::string&) { return true; }
bool RunServices::RestoreOriginalAttr(RunState&, const std::string&, const std::string&) { return true; }
void RunServices::RemoveItemOKFromRestore(RunState&, const std::string&) {}
bool RunServices::IsToBeExcluded(RunState&, const std::string&) { return false; }
bool RunServices::IsToBeFiltered(RunState&, const std::string&, const ItemAttributes&) { return false; }
bool RunServices::ExactSyncFileExists(RunState&, int) { return false; }
bool RunServices::ItWasExixting(RunState&, const std::string&, int) { return false; }
std::vector<std::string> RunServices::IndexedRootNames(RunState&, int) { return {}; }
bool RunServices::WriteExactSyncIndex(RunState&, const PlistDict&, int) { return true; }
std::optional<std::string> RunServices::GetDestSubFolderName(RunState&, const std::string&) { return std::nullopt; }
PlistArray RunServices::ExecutiveMultiArray(RunState&, const PlistDict&) { return {}; }
bool RunServices::MountAllVolumesForSession(RunState&, const PlistDict&) { return true; }
void RunServices::UnmountAllVolumesForSession(RunState&, const PlistDict&) {}
void RunServices::ExecuteAppleScript(RunState&, const PlistDict&, int) {}
void RunServices::MakeLog(RunState&) {}

RunServices& DefaultRunServices() {
  static RunServices services;
  return services;
}

}  // namespace marigold
