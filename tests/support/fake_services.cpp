#include "support/fake_services.h"

#include <algorithm>

#include "engine/exact_sync_index.h"
#include "engine/folder_guard.h"
#include "options/filters.h"
#include "options/multi_list.h"

namespace marigold {

FakeServices::FakeServices() {
  folders = this;
  filter = this;
  index = this;
  tasks = this;
  hooks = this;
  log = this;
}

void FakeServices::Bind(EngineContext& context) {
  if (guard) guard->Bind(context);
  if (exactIndex) exactIndex->Bind(context);
}

void FakeServices::SessionStarts(RunState&, const PlistDict& session) {
  if (filters) filters->SessionStarts(session);
}

bool FakeServices::FoldersAreValid(RunState& state, const std::string& source, const std::string& dest, int check) {
  Record("validate", state);
  if (guard) return guard->FoldersAreValid(state, source, dest, check);
  return std::find(invalidSources.begin(), invalidSources.end(), source) == invalidSources.end();
}

void FakeServices::MakeItemsToDontCopyList(RunState& state) {
  if (guard) guard->MakeItemsToDontCopyList(state);
}

int FakeServices::CheckPrivilegesOnFiles(RunState& state, const std::string& source, const std::string& dest,
                                         int mode) {
  if (guard) return guard->CheckPrivilegesOnFiles(state, source, dest, mode);
  auto found = privilegeProblems.find(source);
  return found == privilegeProblems.end() ? 0 : found->second;
}

bool FakeServices::TryResolveSymLinkFile(RunState& state, std::string& path, ItemAttributes& attributes,
                                         bool& link) {
  return guard ? guard->TryResolveSymLinkFile(state, path, attributes, link) : true;
}

bool FakeServices::UnlockChain(RunState& state, const std::string& item, const std::string& mainFolder, int check) {
  return guard ? guard->UnlockChain(state, item, mainFolder, check) : false;
}

bool FakeServices::RestoreOriginalAttr(RunState& state, const std::string& pathA, const std::string& pathB) {
  restoreCalls.push_back("restore " + pathA + " " + pathB);
  return guard ? guard->RestoreOriginalAttr(state, pathA, pathB) : true;
}

void FakeServices::RemoveItemOKFromRestore(RunState& state, const std::string& path) {
  restoreCalls.push_back("release " + path);
  if (guard) guard->RemoveItemOKFromRestore(state, path);
}

bool FakeServices::IsToBeExcluded(RunState&, const std::string& path) {
  return filters ? filters->IsToBeExcluded(path) : excluded.contains(path);
}

bool FakeServices::IsToBeFiltered(RunState&, const std::string& path, const ItemAttributes& attributes) {
  return filters && filters->IsToBeFiltered(path, attributes);
}

bool FakeServices::ExactSyncFileExists(RunState&, int which) { return exactIndex && exactIndex->ExactSyncFileExists(which == 1); }

bool FakeServices::ItWasExixting(RunState&, const std::string& path, int where) {
  indexQuestions.push_back(path);
  return exactIndex ? exactIndex->ItWasExixting(path, where) : indexed.contains(path);
}

bool FakeServices::WriteExactSyncIndex(RunState&, const PlistDict& taskRecord, int which) {
  indexRecords.push_back(taskRecord);
  return exactIndex ? exactIndex->WriteExactSyncIndex(which, taskRecord) : true;
}

std::optional<std::string> FakeServices::GetDestSubFolderName(RunState& state, const std::string& source) {
  return subFolderNamer ? subFolderNamer(state, source) : subFolderName;
}

PlistArray FakeServices::ExecutiveMultiArray(RunState& state, const PlistDict& session) {
  if (multiFromSession) return marigold::ExecutiveMultiArray(session);
  PlistArray rows;
  for (const auto& [source, destination] : multiRows[state.sessionIndex]) {
    rows.emplace_back(PlistDict{{"onOff", 1}, {"source", source}, {"destination", destination}});
  }
  return rows;
}

bool FakeServices::MountAllVolumesForSession(RunState& state, const PlistDict&) {
  Record("mount", state);
  return true;
}

void FakeServices::UnmountAllVolumesForSession(RunState& state, const PlistDict&) { Record("unmount", state); }

void FakeServices::ExecuteAppleScript(RunState& state, const PlistDict&, int which) {
  Record(which == 1 ? "before" : "after", state);
  if (onScript) onScript(state.sessionIndex, which);
}

void FakeServices::MakeLog(RunState&) { calls.push_back("log"); }

void FakeServices::Record(const char* what, const RunState& state) {
  calls.push_back(std::string(what) + " s" + std::to_string(state.sessionIndex));
}

}  // namespace marigold
