#include "engine/folder_validation.h"

#include "engine/boot_lists.h"
#include "engine/error_path.h"
#include "engine/privilege_messages.h"
#include "options/settings_titles.h"
#include "util/strings_table.h"

namespace marigold {
namespace {

std::string WithoutTrailingSlash(std::string path) {
  while (path.size() > 1 && path.back() == '/') path.pop_back();
  return path;
}

std::string HelpPageTail(const char* explains) {
  return GLS("\r\rPlease take a look at our web page:\r") + kBootBackupHelpAddress + GLS(explains);
}

constexpr const char* kExplainsBootDisk = "\rIt explains how to back-up the boot disk properly";

// The folder `path` names with ".", ".." and links resolved. A path that does not exist yet is
// its nearest existing folder, resolved, with the missing names after it.
std::string CanonicalFolder(FileSystem& fs, const std::string& path) {
  std::string existing = path;
  std::string missing;
  while (!existing.empty()) {
    if (auto resolved = fs.ResolvePath(existing))
      return missing.empty() ? resolved.Value() : ChildPath(resolved.Value(), missing);
    const std::size_t slash = existing.rfind('/');
    if (slash == std::string::npos || existing == "/") break;
    const std::string name = existing.substr(slash + 1);
    missing = missing.empty() ? name : name + "/" + missing;
    existing = slash == 0 ? "/" : existing.substr(0, slash);
  }
  return path;
}

// Whether `inner` lies below `outer` (both canonical).
bool IsInside(const std::string& inner, const std::string& outer) {
  if (outer == "/") return inner.size() > 1 && inner.front() == '/';
  return inner.size() > outer.size() && inner.compare(0, outer.size(), outer) == 0 && inner[outer.size()] == '/';
}

}  // namespace

bool FolderValidation::Refuse(std::initializer_list<std::string_view> parts, int forceToCase) {
  mContext.errors.SetErrMsg(parts);
  mContext.errors.AddErrQuickly(forceToCase);
  return false;
}

bool FolderValidation::FoldersAreValid(const std::string& source, const std::string& dest, int forceToCase) {
  RunState& state = mContext.state;
  state.gSourceFolder = WithoutTrailingSlash(source);
  state.gDestFolder = WithoutTrailingSlash(dest);
  std::string resolvedA, resolvedB;
  bool folderA = false, folderB = false;
  if (!ResolveSide(true, state.gSourceFolder, resolvedA, folderA, forceToCase)) return false;
  state.gSourceFolder = resolvedA;
  if (!ResolveSide(false, state.gDestFolder, resolvedB, folderB, forceToCase)) return false;
  state.gDestFolder = resolvedB;

  if (folderA != folderB)
    return Refuse({GLS(folderA ? "Can't set a source folder and a destination file"
                               : "Can't set a source file and a destination folder")},
                  forceToCase);
  // Two spellings of one folder are one folder; and a folder inside the other would be copied into
  // itself (a level deeper on every run) or, in an exact backup into its parent, deleted.
  const std::string canonicalA = CanonicalFolder(mContext.fs, resolvedA);
  const std::string canonicalB = CanonicalFolder(mContext.fs, resolvedB);
  if (resolvedA == resolvedB || canonicalA == canonicalB)
    return Refuse({GLS("Cannot set equal source and destination")}, forceToCase);
  // Inside a folder the scan never walks into (a system disk's /media, say), a destination is not
  // copied into itself.
  if (IsInside(canonicalB, canonicalA)) {
    const std::size_t next = canonicalB.find('/', canonicalA == "/" ? 1 : canonicalA.size() + 1);
    if (!IsNeverWalked(canonicalB.substr(0, next), canonicalA, canonicalB, mVolumes))
      return Refuse({GLS("Cannot set a destination folder inside the source folder")}, forceToCase);
  }
  if (IsInside(canonicalA, canonicalB))
    return Refuse({GLS("Cannot set a source folder inside the destination folder")}, forceToCase);
  if (!folderA && LastPathComponent(resolvedA) != LastPathComponent(resolvedB))
    return Refuse({GLS("Can't set 2 files with different names")}, forceToCase);
  return BootRulesHold(resolvedA, resolvedB, forceToCase);
}

bool FolderValidation::ResolveSide(bool source, const std::string& path, std::string& resolved, bool& isFolder,
                                   int forceToCase) {
  RunState& state = mContext.state;
  FileSystem& fs = mContext.fs;
  // The folder of a volume that is not mounted may still be there, empty: it is refused as
  // missing, never scanned as a side with nothing in it.
  const bool onUnmountedVolume = !path.empty() && mContext.services.hooks->IsOnUmountedVolume(state, path);
  auto attributes = fs.GetAttributes(path);
  if (!attributes || onUnmountedVolume) {
    const std::string notDefinedA = GLS("Source Folder not defined");
    const std::string notDefinedB = GLS("Destination Folder not defined");
    std::string message;
    if (path.empty()) {
      message = source ? notDefinedA : notDefinedB;
      (source ? state.gSourceFolder : state.gDestFolder) = message;
    } else {
      message = GLS(source ? "Cannot find the source folder:" : "Cannot find the destination folder:") + "\r\"" +
                path + "\"";
      if (onUnmountedVolume)
        message += GLS("\rbecause I cannot mount the volume it resides on");
      else if (!attributes.Error().IsMissing())
        message += "\r" + attributes.Error().Message();
    }
    // The log names a folder that was not given as not defined, whichever side failed.
    if (state.gSourceFolder.empty()) state.gSourceFolder = notDefinedA;
    if (state.gDestFolder.empty()) state.gDestFolder = notDefinedB;
    return Refuse({message}, forceToCase);
  }
  resolved = path;
  if (attributes.Value().kind == ItemKind::kSymlink) {
    auto target = fs.ResolvePath(path);
    if (target) attributes = fs.GetAttributes(target.Value());
    if (!target || target.Value() == path || !attributes)
      return Refuse({GLS(source ? "Can't resolve the main source SYM link" : "Can't resolve the main destination SYM link"),
                     " \"", path, "\""},
                    forceToCase);
    resolved = target.Value();
  }
  isFolder = attributes.Value().IsReallyFolder();
  return true;
}

bool FolderValidation::BootRulesHold(const std::string& source, const std::string& dest, int forceToCase) {
  RunState& state = mContext.state;
  ErrorPath& errors = mContext.errors;
  const bool srcSlash = source == "/";
  const bool dstSlash = dest == "/";
  const bool srcBoot = !srcSlash && mVolumes.IsRootOfBootableVolume(source);
  const bool dstBoot = !dstSlash && mVolumes.IsRootOfBootableVolume(dest);
  const std::string runAsRoot = " \"" + GLS(kRunAsRootTitle) + "\" ";

  // The volume whose ownership matters is the one that receives the system, or the one that is
  // not the system.
  bool lookAtDest = false;
  if (!srcSlash && !dstSlash) {
    if (!srcBoot && !dstBoot) return true;
    lookAtDest = srcBoot;
    if (!state.mEuidIsRoot) {
      errors.SetErrMsg({GLS("The "), GLS(srcBoot ? "source" : "destination"),
                        GLS(" is a bootable volume, therefore it should be processed with the root's privileges. "),
                        GLS("If you continue you will not get a bootable backup disk.\rIn order to properly perform "
                            "the sync/backup of a bootable volume, please log in as root or mark the check-box \""),
                        GLS(kRunAsRootTitle), "\" ", GLS("in the MG Preferences panel."),
                        HelpPageTail(kExplainsBootDisk)});
      if (!errors.AddErrQuickly(forceToCase)) return false;
    }
  } else {
    lookAtDest = srcSlash;
    if (!state.mEuidIsRoot)
      return Refuse({GLS("Cannot process the boot disk without the root's privileges. Please log in as root or mark "
                         "the check-box"),
                     runAsRoot, GLS("in the MG Preferences panel."),
                     HelpPageTail("\rIt explains how to back-up a bootable volume properly")},
                    forceToCase);
  }

  const SessionSwitches& s = state.session;
  const char* discouraged = s.gIsResolveAliasOn     ? kResolveAliasTitle
                            : s.gIsResolveSymLinkOn ? kResolveSymLinkTitle
                            : s.gCreateDestFolder   ? kCreateDestFolderTitle
                                                    : nullptr;
  if (discouraged != nullptr)
    return Refuse({GLS("We discourage to sync/backup the boot disk using the check-box"), " \"", GLS(discouraged),
                   "\" ", GLS("on. Unmark that check-box"), " ", GLS("in the MG Settings panel."),
                   HelpPageTail(kExplainsBootDisk)},
                  forceToCase);

  if (mVolumes.CanVolumeManageOwnership(lookAtDest ? dest : source)) return true;
  errors.SetErrMsg({GLS("The "), GLS(lookAtDest ? "destination" : "source"),
                    GLS(" volume settings don't allow to manage ownership and permissions. If you continue you will "
                        "not get a bootable backup disk. In order to perform the backup of your boot disk properly, "
                        "please:"),
                    GLS("\r• Select the volume icon in the Finder."), GLS("\r• Select the menu item \"Get Info\"."),
                    GLS("\r• Expand the section \"Sharing & Permissions\"."),
                    GLS("\r• Unmark the check-box \"Ignore Ownership on this volume\"."),
                    HelpPageTail(kExplainsBootDisk)});
  return errors.AddErrQuickly(forceToCase);
}

}  // namespace marigold
