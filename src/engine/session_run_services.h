// What a real run uses for the session options: the folder checks and unlocking, the filters and
// exclusions, the exact-sync index, the dated sub-folder and the multiple list. Front ends build
// one per run and hand it to the RunDriver; tests of the engine alone use the defaults instead.
#pragma once

#include <string>

#include "engine/exact_sync_index.h"
#include "engine/folder_guard.h"
#include "engine/run_services.h"
#include "options/filters.h"

namespace marigold {

class SessionRunServices : public RunServices {
 public:
  // `exactIndexFolder` is where the exact-sync index lives (the support folder's
  // "ExactSync Indexes").
  explicit SessionRunServices(const std::string& exactIndexFolder);
  ~SessionRunServices() override;

  void Bind(EngineContext& context) override;
  void SessionStarts(RunState& state, const PlistDict& session) override;

  // --- folder checks, links, privileges and unlocking ---------------------------------------
  bool FoldersAreValid(RunState& state, const std::string& source, const std::string& dest, int forceToCase) override;
  void MakeItemsToDontCopyList(RunState& state) override;
  int CheckPrivilegesOnFiles(RunState& state, const std::string& source, const std::string& dest,
                             int copyMode) override;
  std::string LastPrivilegeProblem() override;
  bool TryResolveSymLinkFile(RunState& state, std::string& path, ItemAttributes& attributes,
                             bool& isSymLink) override;
  bool UnlockChain(RunState& state, const std::string& item, const std::string& mainFolder, int check) override;
  bool UnlockWholeItem(RunState& state, const std::string& path) override;
  bool RestoreOriginalAttr(RunState& state, const std::string& pathA, const std::string& pathB) override;
  void RemoveItemOKFromRestore(RunState& state, const std::string& path) override;

  // --- filters, exclusions and the multiple list ----------------------------------------------
  bool IsToBeExcluded(RunState& state, const std::string& path) override;
  bool IsToBeFiltered(RunState& state, const std::string& path, const ItemAttributes& attributes) override;
  PlistArray ExecutiveMultiArray(RunState& state, const PlistDict& session) override;

  // --- the exact-sync index ------------------------------------------------------------------
  bool ExactSyncFileExists(RunState& state, int which) override;
  bool ItWasExixting(RunState& state, const std::string& path, int where) override;
  std::vector<std::string> IndexedRootNames(RunState& state, int where) override;
  bool WriteExactSyncIndex(RunState& state, const PlistDict& taskRecord, int mode) override;

  // --- the dated sub-folder -----------------------------------------------------------------
  std::optional<std::string> GetDestSubFolderName(RunState& state, const std::string& source) override;

  FolderGuard& guard() { return mGuard; }

 private:
  FolderGuard mGuard;
  ExactSyncIndex mIndex;
  SessionFilters mFilters;
};

}  // namespace marigold
