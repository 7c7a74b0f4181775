#include "engine/privilege_check.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "engine/copy_executor.h"
#include "engine/copy_mode.h"
#include "platform/tree_walk.h"
#include "util/strings_table.h"

namespace marigold {
namespace {

constexpr const char* kOnItem = "on that file or its parent folders";
constexpr const char* kInsidePackageRead = "or some of the items inside the filePackage.";
constexpr const char* kInsidePackage = "on some of the items of the filePackage";

bool OwnedByUser(const ItemAttributes& attributes) {
  const uid_t user = ::geteuid();
  return user == 0 || attributes.uid == user;
}

}  // namespace

int PrivilegeCheck::CheckPrivilegesOnFiles(const std::string& source, const std::string& dest, int copyMode) {
  // A check by path is a task's check of its main folders, before its scan: what an earlier
  // task's scan learnt about folders, its run may since have changed.
  mWritableFolder.clear();
  mWritableFolderAttributes.reset();
  mFoldersToMake.clear();
  auto attributesA = mContext.fs.GetAttributes(source);
  auto attributesB = mContext.fs.GetAttributes(dest);
  return CheckScannedPrivileges(source, dest, copyMode, attributesA ? &attributesA.Value() : nullptr,
                                attributesB ? &attributesB.Value() : nullptr);
}

int PrivilegeCheck::CheckScannedPrivileges(const std::string& source, const std::string& dest, int copyMode,
                                           const ItemAttributes* attributesA, const ItemAttributes* attributesB) {
  mProblem.clear();
  const bool fromA = ActsFromSideA(copyMode);
  const std::string& from = fromA ? source : dest;
  const std::string& to = fromA ? dest : source;
  const ItemAttributes* fromAttributes = fromA ? attributesA : attributesB;
  const ItemAttributes* toAttributes = fromA ? attributesB : attributesA;
  int result = kPrivilegesOK;
  switch (copyMode) {
    case kCopyModeCopyAToB:
    case kCopyModeCopyBToA:
    case kCopyModeReplaceAToB:
    case kCopyModeReplaceBToA:
      if (fromAttributes) result = CanRead(from, *fromAttributes);
      if (result != kPrivilegesOK) return result;
      if (toAttributes) return CanDelete(to, *toAttributes);
      return CanWriteInto(ParentFolderOf(to));
    case kCopyModeDeleteInA:
    case kCopyModeDeleteInB:
      return fromAttributes ? CanDelete(from, *fromAttributes) : kPrivilegesOK;
    case kCopyModeMetadataAToB:
    case kCopyModeMetadataBToA:
      return toAttributes ? CanSetMetadata(to, *toAttributes) : kPrivilegesOK;
    case kCopyModeSkip:
    case kCopyModeNothing:
      // Nothing is written here; both sides must still be readable to be compared.
      if (attributesA) result = CanRead(source, *attributesA);
      if (result == kPrivilegesOK && attributesB) result = CanRead(dest, *attributesB);
      return result;
  }
  return kPrivilegesOK;
}

int PrivilegeCheck::CanRead(const std::string& path, const ItemAttributes& attributes) {
  // A link's text is readable by anyone who can see the link.
  if (attributes.kind == ItemKind::kSymlink) return kPrivilegesOK;
  const int access = attributes.IsFolder() ? kAccessRead | kAccessSearch : kAccessRead;
  if (!mContext.fs.CheckAccess(path, access))
    return Refuse(kPrivilegesInsufficient, "Can't read the item", path, attributes.isPackage ? kInsidePackageRead : "");
  if (attributes.isPackage) return CheckFilePackagePermissions(path, Need::kRead);
  return kPrivilegesOK;
}

int PrivilegeCheck::CanWriteInto(const std::string& folder) {
  if (!mWritableFolder.empty() && folder == mWritableFolder) return kPrivilegesOK;
  // A folder still to be made is made by this run, for this user; so is everything inside it.
  if (mFoldersToMake.contains(folder)) return kPrivilegesOK;
  if (mFoldersToMake.contains(ParentFolderOf(folder))) {
    mFoldersToMake.insert(folder);
    return kPrivilegesOK;
  }
  auto attributes = mContext.fs.GetAttributes(folder);
  if (!attributes && attributes.Error().code == ENOENT) mFoldersToMake.insert(folder);
  if (!attributes || mContext.fs.CheckAccess(folder, kAccessWrite | kAccessSearch)) {
    mWritableFolder = folder;
    mWritableFolderAttributes.reset();
    if (attributes) mWritableFolderAttributes = attributes.Value();
    return kPrivilegesOK;
  }
  if (attributes.Value().isLocked) {
    const int locked = Locked();
    return locked == kPrivilegesOK ? locked : Refuse(locked, "Can't write the item", folder, kOnItem);
  }
  // Permissions the run may open: the user owns the folder and its volume is writable.
  if (OwnedByUser(attributes.Value()) && mContext.fs.CheckAccess(folder, kAccessExists)) {
    auto volume = mContext.fs.GetVolume(folder);
    if (!volume || !volume.Value().readOnly) return kPrivilegesOK;
  }
  return Refuse(kPrivilegesInsufficient, "Can't write the item", folder, kOnItem);
}

int PrivilegeCheck::CanDelete(const std::string& path, const ItemAttributes& attributes) {
  const char* what = "Can't delete the item";
  if (attributes.isLocked) {
    const int locked = Locked();
    if (locked != kPrivilegesOK) return Refuse(locked, what, path, kOnItem);
  }
  const std::string parent = ParentFolderOf(path);
  const int parentResult = CanWriteInto(parent);
  if (parentResult != kPrivilegesOK) return Refuse(parentResult, what, path, kOnItem);
  std::optional<ItemAttributes> parentAttributes;
  if (parent == mWritableFolder && mWritableFolderAttributes) {
    parentAttributes = mWritableFolderAttributes;
  } else if (auto read = mContext.fs.GetAttributes(parent)) {
    parentAttributes = std::move(read).Value();
  }
  // In a sticky folder (such as /tmp) only the owners of the item or of the folder may remove it.
  if (parentAttributes && (parentAttributes->mode & S_ISVTX) != 0 && !OwnedByUser(attributes) &&
      !OwnedByUser(*parentAttributes))
    return Refuse(kPrivilegesInsufficient, what, path, kOnItem);
  if (attributes.isPackage) return CheckFilePackagePermissions(path, Need::kDelete);
  return kPrivilegesOK;
}

int PrivilegeCheck::CanSetMetadata(const std::string& path, const ItemAttributes& attributes) {
  if (attributes.isLocked) {
    const int locked = Locked();
    if (locked != kPrivilegesOK) return Refuse(locked, "Can't write the item", path, kOnItem);
  }
  if (!OwnedByUser(attributes)) return Refuse(kPrivilegesInsufficient, "Can't write the item", path, kOnItem);
  return kPrivilegesOK;
}

int PrivilegeCheck::CheckFilePackagePermissions(const std::string& path, Need need) {
  FileSystem& fs = mContext.fs;
  int result = kPrivilegesOK;
  WalkCallbacks callbacks;
  callbacks.visit = [&](const WalkItem& item) {
    const ItemAttributes& attributes = item.entry.attributes;
    if (need == Need::kRead) {
      if (attributes.kind == ItemKind::kSymlink) return WalkAction::kContinue;
      const int access = attributes.IsFolder() ? kAccessRead | kAccessSearch : kAccessRead;
      if (!fs.CheckAccess(item.path, access)) result = kPrivilegesInsufficient;
    } else {
      if (attributes.isLocked) result = Locked();
      if (result == kPrivilegesOK && attributes.IsFolder() &&
          !fs.CheckAccess(item.path, kAccessWrite | kAccessSearch) && !OwnedByUser(attributes))
        result = kPrivilegesInsufficient;
    }
    return result == kPrivilegesOK ? WalkAction::kContinue : WalkAction::kStop;
  };
  callbacks.listingFailed = [&](const FsError&) {
    result = kPrivilegesInsufficient;
    return false;
  };
  WalkTree(fs, path, callbacks);
  if (result == kPrivilegesOK) return result;
  return need == Need::kRead ? Refuse(result, "Can't read the item", path, kInsidePackageRead)
                             : Refuse(result, "Can't delete the item", path, kInsidePackage);
}

int PrivilegeCheck::Locked() {
  const SessionSwitches& s = mContext.state.session;
  // Only root can clear the lock, and only when the session asks the run to.
  if (s.gIsUnlockOn && ::geteuid() == 0) return kPrivilegesOK;
  return s.gIsUnlockOn ? kPrivilegesInsufficient : kPrivilegesItemLocked;
}

int PrivilegeCheck::Refuse(int result, const char* what, const std::string& path, const char* tail) {
  mProblem = GLS(what) + " \"" + path + "\"";
  if (*tail != '\0') mProblem += " " + GLS(tail);
  return result;
}

}  // namespace marigold
