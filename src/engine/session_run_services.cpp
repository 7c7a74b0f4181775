#include "engine/session_run_services.h"

#include "engine/engine_context.h"
#include "options/multi_list.h"
#include "options/sub_folder_name.h"

namespace marigold {

SessionRunServices::SessionRunServices(const std::string& exactIndexFolder) : mIndex(exactIndexFolder) {}

SessionRunServices::~SessionRunServices() = default;

void SessionRunServices::Bind(EngineContext& context) {
  mGuard.Bind(context);
  mIndex.Bind(context);
}

void SessionRunServices::SessionStarts(RunState&, const PlistDict& session) { mFilters.SessionStarts(session); }

bool SessionRunServices::IsToBeExcluded(RunState&, const std::string& path) { return mFilters.IsToBeExcluded(path); }

bool SessionRunServices::IsToBeFiltered(RunState&, const std::string& path, const ItemAttributes& attributes) {
  return mFilters.IsToBeFiltered(path, attributes);
}

PlistArray SessionRunServices::ExecutiveMultiArray(RunState&, const PlistDict& session) {
  return marigold::ExecutiveMultiArray(session);
}

bool SessionRunServices::FoldersAreValid(RunState& state, const std::string& source, const std::string& dest,
                                         int forceToCase) {
  return mGuard.FoldersAreValid(state, source, dest, forceToCase);
}

void SessionRunServices::MakeItemsToDontCopyList(RunState& state) { mGuard.MakeItemsToDontCopyList(state); }

int SessionRunServices::CheckPrivilegesOnFiles(RunState& state, const std::string& source, const std::string& dest,
                                               int copyMode) {
  return mGuard.CheckPrivilegesOnFiles(state, source, dest, copyMode);
}

std::string SessionRunServices::LastPrivilegeProblem() { return mGuard.LastPrivilegeProblem(); }

bool SessionRunServices::TryResolveSymLinkFile(RunState& state, std::string& path, ItemAttributes& attributes,
                                               bool& isSymLink) {
  return mGuard.TryResolveSymLinkFile(state, path, attributes, isSymLink);
}

bool SessionRunServices::UnlockChain(RunState& state, const std::string& item, const std::string& mainFolder,
                                     int check) {
  return mGuard.UnlockChain(state, item, mainFolder, check);
}

bool SessionRunServices::UnlockWholeItem(RunState& state, const std::string& path) {
  return mGuard.UnlockWholeItem(state, path);
}

bool SessionRunServices::RestoreOriginalAttr(RunState& state, const std::string& pathA, const std::string& pathB) {
  return mGuard.RestoreOriginalAttr(state, pathA, pathB);
}

void SessionRunServices::RemoveItemOKFromRestore(RunState& state, const std::string& path) {
  mGuard.RemoveItemOKFromRestore(state, path);
}

bool SessionRunServices::ExactSyncFileExists(RunState&, int which) { return mIndex.ExactSyncFileExists(which == 1); }

bool SessionRunServices::ItWasExixting(RunState&, const std::string& path, int where) {
  return mIndex.ItWasExixting(path, where);
}

std::vector<std::string> SessionRunServices::IndexedRootNames(RunState&, int where) {
  return mIndex.RecordedRootNames(where);
}

bool SessionRunServices::WriteExactSyncIndex(RunState&, const PlistDict& taskRecord, int mode) {
  return mIndex.WriteExactSyncIndex(mode, taskRecord);
}

std::optional<std::string> SessionRunServices::GetDestSubFolderName(RunState& state, const std::string& source) {
  return DestSubFolderNameForTask(state, source);
}

}  // namespace marigold
