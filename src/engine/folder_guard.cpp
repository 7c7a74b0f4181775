#include "engine/folder_guard.h"

#include "engine/boot_lists.h"
#include "engine/symlink_resolution.h"

namespace marigold {

void FolderGuard::Bind(EngineContext& context) {
  mContext = &context;
  if (!mVolumes) mVolumes = std::make_unique<BootVolumes>(context.fs);
  mValidation.emplace(context, *mVolumes);
  mUnlocking.emplace(context);
  mPrivileges.emplace(context);
}

bool FolderGuard::FoldersAreValid(RunState&, const std::string& source, const std::string& dest, int forceToCase) {
  return mValidation->FoldersAreValid(source, dest, forceToCase);
}

void FolderGuard::MakeItemsToDontCopyList(RunState& state) { marigold::MakeItemsToDontCopyList(state, *mVolumes); }

int FolderGuard::CheckPrivilegesOnFiles(RunState&, const std::string& source, const std::string& dest, int copyMode) {
  return mPrivileges->CheckPrivilegesOnFiles(source, dest, copyMode);
}

int FolderGuard::CheckScannedPrivileges(RunState&, const std::string& source, const std::string& dest, int copyMode,
                                        const ItemAttributes* attributesA, const ItemAttributes* attributesB) {
  return mPrivileges->CheckScannedPrivileges(source, dest, copyMode, attributesA, attributesB);
}

bool FolderGuard::TryResolveSymLinkFile(RunState&, std::string& path, ItemAttributes& attributes, bool& isSymLink) {
  return marigold::TryResolveSymLinkFile(*mContext, path, attributes, isSymLink);
}

bool FolderGuard::UnlockChain(RunState&, const std::string& item, const std::string& mainFolder, int check) {
  return mUnlocking->UnlockChain(item, mainFolder, check);
}

bool FolderGuard::RestoreOriginalAttr(RunState&, const std::string& pathA, const std::string& pathB) {
  return mUnlocking->RestoreOriginalAttr(pathA, pathB);
}

void FolderGuard::RemoveItemOKFromRestore(RunState&, const std::string& path) {
  mUnlocking->RemoveItemOKFromRestore(path);
}

bool FolderGuard::UnlockWholeItem(RunState&, const std::string& path) { return mUnlocking->UnlockWholeItem(path); }

}  // namespace marigold
