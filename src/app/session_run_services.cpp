#include "app/session_run_services.h"

#include "engine/run_state.h"
#include "options/multi_list.h"
#include "options/sub_folder_name.h"

namespace marigold {

void SessionItemFilter::SessionStarts(RunState&, const PlistDict& session) { mFilters.SessionStarts(session); }

bool SessionItemFilter::IsToBeExcluded(RunState&, const std::string& path) { return mFilters.IsToBeExcluded(path); }

bool SessionItemFilter::IsToBeFiltered(RunState&, const std::string& path, const ItemAttributes& attributes) {
  return mFilters.IsToBeFiltered(path, attributes);
}

bool SessionExactIndex::ExactSyncFileExists(RunState&, int which) { return mIndex.ExactSyncFileExists(which == 1); }

bool SessionExactIndex::ItWasExixting(RunState&, const std::string& path, int where) {
  return mIndex.ItWasExixting(path, where);
}

std::vector<std::string> SessionExactIndex::IndexedRootNames(RunState&, int where) {
  return mIndex.RecordedRootNames(where);
}

bool SessionExactIndex::WriteExactSyncIndex(RunState&, const PlistDict& taskRecord, int mode) {
  return mIndex.WriteExactSyncIndex(mode, taskRecord);
}

std::optional<std::string> SessionTaskPlanner::GetDestSubFolderName(RunState& state, const std::string& source) {
  return DestSubFolderNameForTask(state.session, state.sessionIndex, source);
}

PlistArray SessionTaskPlanner::ExecutiveMultiArray(RunState&, const PlistDict& session) {
  return marigold::ExecutiveMultiArray(session);
}

SessionRunServices::SessionRunServices(const std::string& exactIndexFolder, const std::string& defaultLogFolder)
    : mIndex(exactIndexFolder), mLog(defaultLogFolder) {
  folders = &mGuard;
  filter = &mFilter;
  index = &mIndex;
  tasks = &mPlanner;
  log = &mLog;
}

}  // namespace marigold
