// The engine's guard of a task's folders: validation of the main folders, the system-volume
// lists, links resolved inside a tree, privilege checks, and the opening and shutting again of
// locked and read-only items: the run's folder-checks role. Bind before the first call; runs on
// the worker thread.
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "engine/boot_volumes.h"
#include "engine/folder_validation.h"
#include "engine/item_unlocking.h"
#include "engine/privilege_check.h"
#include "engine/run_services.h"

namespace marigold {

class FolderGuard : public FolderChecks {
 public:
  // Replaces the volume questions (tests stand a folder for a system disk). Before Bind.
  void UseVolumes(std::unique_ptr<BootVolumes> volumes) { mVolumes = std::move(volumes); }
  void Bind(EngineContext& context) override;

  bool FoldersAreValid(RunState& state, const std::string& source, const std::string& dest, int forceToCase) override;
  void MakeItemsToDontCopyList(RunState& state) override;
  int CheckPrivilegesOnFiles(RunState& state, const std::string& source, const std::string& dest, int copyMode) override;
  int CheckScannedPrivileges(RunState& state, const std::string& source, const std::string& dest, int copyMode,
                             const ItemAttributes* attributesA, const ItemAttributes* attributesB) override;
  bool TryResolveSymLinkFile(RunState& state, std::string& path, ItemAttributes& attributes, bool& isSymLink) override;
  bool UnlockChain(RunState& state, const std::string& item, const std::string& mainFolder, int check) override;
  bool RestoreOriginalAttr(RunState& state, const std::string& pathA, const std::string& pathB) override;
  void RemoveItemOKFromRestore(RunState& state, const std::string& path) override;
  bool UnlockWholeItem(RunState& state, const std::string& path) override;

  // Why the last privilege check refused ("Can't write the item ..."), for the report.
  std::string LastPrivilegeProblem() override { return mPrivileges->LastProblem(); }
  FolderValidation& Validation() { return *mValidation; }
  ItemUnlocking& Unlocking() { return *mUnlocking; }

 private:
  std::unique_ptr<BootVolumes> mVolumes;
  EngineContext* mContext = nullptr;
  std::optional<FolderValidation> mValidation;
  std::optional<ItemUnlocking> mUnlocking;
  std::optional<PrivilegeCheck> mPrivileges;
};

}  // namespace marigold
