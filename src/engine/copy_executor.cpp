// Walking a scan tree: each node's action, the deletion of folders with their contents, and the
// folder dates once a folder's contents are done.
#include "engine/copy_executor.h"

#include "engine/copy_mode.h"
#include "engine/copy_pipeline.h"
#include "engine/error_path.h"
#include "util/strings_table.h"

namespace marigold {

namespace {

bool IsDeletion(int mode) { return mode == kCopyModeDeleteInA || mode == kCopyModeDeleteInB; }

}  // namespace

std::string ParentFolderOf(const std::string& path) {
  std::size_t end = path.size();
  while (end > 1 && path[end - 1] == '/') --end;
  std::size_t slash = path.rfind('/', end - 1);
  if (slash == std::string::npos) return ".";
  if (slash == 0) return "/";
  while (slash > 1 && path[slash - 1] == '/') --slash;
  return path.substr(0, slash);
}

CopyExecutor::CopyExecutor(EngineContext& context)
    : mContext(context), mWords(CopyLogWords::Localised()) {}

CopyExecutor::~CopyExecutor() = default;

bool CopyExecutor::CopyItems(std::vector<ScanNode>& nodes, const std::string& folderA,
                             const std::string& folderB, bool deleteParent) {
  // The words follow the language table installed when the run starts.
  if (mDepth == 0) {
    mWords = CopyLogWords::Localised();
    // Each task starts with no knowledge of its volumes.
    mHints.noClone = false;
    mHints.noUnnamedFiles = false;
    mHints.noOwnerChange = false;
    ForgetReadyFolder();
    mPipelineFailed = false;
  }
  ++mDepth;
  bool result = WalkItems(nodes, folderA, folderB, deleteParent);
  --mDepth;
  if (mDepth == 0) {
    Settle();
    if (mPipelineFailed) result = false;
    // The task's own walk ends: whatever it opened in its main folders is shut again.
    mContext.services.folders->RestoreOriginalAttr(mContext.state, folderA, folderB);
  }
  return result;
}

void CopyExecutor::NodePaths(const ScanNode& node, const std::string& folderA, const std::string& folderB,
                             std::string& a, std::string& b) {
  a = ChildPath(folderA, node.name);
  b = ChildPath(folderB, node.DestName());
  // A link that the scan followed is acted on through its target; a link that no longer leads
  // anywhere stays a link, which the check against the scan then reports.
  if (node.resolvedLinks & kResolvedLinkA) {
    if (auto target = mContext.fs.ResolvePath(a)) a = std::move(target).Value();
  }
  if (node.resolvedLinks & kResolvedLinkB) {
    if (auto target = mContext.fs.ResolvePath(b)) b = std::move(target).Value();
  }
}

bool CopyExecutor::WalkItems(std::vector<ScanNode>& nodes, const std::string& folderA,
                             const std::string& folderB, bool deleteParent) {
  RunState& state = mContext.state;
  // Inside a folder that goes to the trash as a whole, one item that cannot go keeps the folder.
  const bool trashingParent = deleteParent && state.session.gIsMoveToTrash;
  bool result = true;
  for (ScanNode& node : nodes) {
    // A stopped run must not delete a folder whose contents were not all seen to.
    if (!state.IsRunOn()) return deleteParent ? false : result;
    const int mode = node.copyMode;
    if (mode < 0 && trashingParent) return false;
    std::string a, b;
    NodePaths(node, folderA, folderB, a, b);

    // The folder dates the agreement after the walk starts from are those before it.
    std::optional<FileTime> dateA, dateB;
    if (node.hasSubItems) {
      const bool fromA = mode == kCopyModeCopyAToB || mode == kCopyModeMetadataAToB;
      const bool fromB = mode == kCopyModeCopyBToA || mode == kCopyModeMetadataBToA;
      if (fromA || mode == kCopyModeNothing) dateA = ModificationDate(a);
      if (fromB || mode == kCopyModeNothing) dateB = ModificationDate(b);
    }
    bool walk = node.hasSubItems;
    if (mode >= kCopyModeCopyAToB && !TryPipelined(node, a, b)) {
      // What the pipeline holds comes first: the tree's order is the order of the log.
      Settle();
      if (!PerformNode(node, a, b, deleteParent)) {
        if (trashingParent) return false;
        result = false;
        continue;
      }
      CountItemDone();
      if (IsDeletion(mode)) walk = false;
      // A case-only rename gave the item its new name.
      NodePaths(node, folderA, folderB, a, b);
    }
    if (walk) {
      if (!CopyItems(node.subItems, a, b, IsDeletion(mode))) result = false;
      ForgetReadyFolder();
      // A folder's own attributes and dates wait for its contents, which the pipeline may hold.
      AfterPending([this, mode, a, b, dateA, dateB] {
        mContext.services.folders->RestoreOriginalAttr(mContext.state, a, b);
        MakeFolderDatesAgree(mode, a, b, dateA, dateB);
      });
    }
  }
  return result;
}

bool CopyExecutor::PerformNode(ScanNode& node, const std::string& a, const std::string& b,
                               bool deleteParent) {
  if (IsDeletion(node.copyMode) && node.hasSubItems && !node.subItems.empty())
    return DeleteFolderWithContents(node, a, b, deleteParent);
  return CopySource(a, b, node, deleteParent);
}

bool CopyExecutor::DeleteFolderWithContents(ScanNode& node, const std::string& a, const std::string& b,
                                            bool deleteParent) {
  RunState& state = mContext.state;
  const bool sideA = node.copyMode == kCopyModeDeleteInA;
  const bool trashWhole = !deleteParent && state.session.gIsMoveToTrash;
  bool done = CopyItems(node.subItems, a, b, true) && state.IsRunOn();
  if (done) done = CopySource(a, b, node, deleteParent);
  if (trashWhole) {
    if (done) {
      FoldInnerTrashCounts(true);
      FoldInnerTrashCounts(false);
      if (!state.gTrashDetailedLogText.empty()) mContext.errors.AppendDetailedLine(state.gTrashDetailedLogText);
    } else if (state.IsRunOn()) {
      ReportError({GLS("Can't trash the folder (and its content)"), " ", Quoted(sideA ? a : b)});
    }
    ResetInnerTrash();
    state.gTrashDetailedLogText.clear();
  }
  return done;
}

bool CopyExecutor::CopySource(const std::string& a, const std::string& b, ScanNode& node, bool deleteParent) {
  const int mode = node.copyMode;
  if (mode < kCopyModeCopyAToB || mode > kCopyModeMetadataBToA) return true;
  FileSystem& fs = mContext.fs;
  const bool fromA = ActsFromSideA(mode);
  const std::string& item = fromA ? a : b;
  const std::string& other = fromA ? b : a;
  const ItemSnapshot& itemSnapshot = fromA ? node.snapshotA : node.snapshotB;
  const ItemSnapshot& otherSnapshot = fromA ? node.snapshotB : node.snapshotA;
  const bool deletes = IsDeletion(mode);
  const bool writesA = deletes ? fromA : !fromA;

  auto attributes = fs.GetAttributes(item);
  if (!attributes) {
    // Gone with a folder deleted earlier in this run: nothing left to do.
    if (IsInsideDeletedItem(item)) return true;
    if (!attributes.Error().IsMissing())
      return ReportError({GLS("Can't read the item"), " ", Quoted(item), "\r",
                          FailureDescription(attributes.Error(), GLS("Can't read the item"))});
    if (deletes) return ReportChanged(item);
    return ReportError({GLS("Can't find the source item"), " ", Quoted(item)});
  }
  const ItemAttributes& attrs = attributes.Value();
  // The decision holds for what the scan saw: an item deleted must be unchanged, an item copied
  // must still be the same kind of item (a file turned folder is not what was decided on).
  if (deletes ? !itemSnapshot.Matches(ItemSnapshot::Of(attrs))
              : (!itemSnapshot.exists || itemSnapshot.kind != attrs.kind))
    return ReportChanged(item);
  if (attrs.kind != ItemKind::kFile && attrs.kind != ItemKind::kFolder && attrs.kind != ItemKind::kSymlink)
    return ReportChanged(item);

  // A package is copied as one item, unless the scan walked it as a folder.
  const bool isFolder = attrs.IsFolder() && (!attrs.isPackage || node.hasSubItems);
  switch (static_cast<CopyMode>(mode)) {
    case kCopyModeCopyAToB:
    case kCopyModeCopyBToA:
      if (isFolder) return QLCreateFolder(other, writesA);
      [[fallthrough]];
    case kCopyModeReplaceAToB:
    case kCopyModeReplaceBToA: {
      if (isFolder) return QLReplaceDestFile(item, other, writesA, otherSnapshot);
      bool goToBail = false;
      if (!QLDestParentExists(ParentFolderOf(other), item, other, goToBail)) return false;
      if (goToBail) return true;
      // The scan saw nothing there: a new copy, which refuses a name taken since.
      if (!otherSnapshot.exists) return QLCopyFile(item, other, writesA, &attrs);
      auto existing = fs.GetAttributes(other);
      if (existing) return ReplaceChecked(item, other, writesA, otherSnapshot, existing, &attrs);
      if (!existing.Error().IsMissing())
        return ReportError({GLS("Can't read the item"), " ", Quoted(other), "\r",
                            FailureDescription(existing.Error(), GLS("Can't read the item"))});
      return QLCopyFile(item, other, writesA, &attrs);
    }
    case kCopyModeDeleteInA:
    case kCopyModeDeleteInB:
      return isFolder ? QLDeleteFolder(item, writesA, attrs, deleteParent)
                      : QLDeleteFile(item, writesA, attrs, deleteParent);
    case kCopyModeMetadataAToB:
    case kCopyModeMetadataBToA: {
      if (!ItemStillAsScanned(other, otherSnapshot)) return false;
      std::string renamedTo;
      if (!QLCopySingleMetadataOnly(item, other, writesA, &renamedTo)) return false;
      if (!renamedTo.empty()) {
        // The item now carries the other side's spelling of the name on both sides.
        if (mode == kCopyModeMetadataBToA) node.name = node.destName;
        node.destName.clear();
      }
      return true;
    }
    case kCopyModeSkip:
    case kCopyModeNothing:
      break;
  }
  return true;
}

void CopyExecutor::MakeFolderDatesAgree(int mode, const std::string& a, const std::string& b,
                                        const std::optional<FileTime>& dateA,
                                        const std::optional<FileTime>& dateB) {
  switch (mode) {
    case kCopyModeCopyAToB:
    case kCopyModeMetadataAToB:
      if (dateA) CopyFolderAttributes(a, b, *dateA);
      return;
    case kCopyModeCopyBToA:
    case kCopyModeMetadataBToA:
      if (dateB) CopyFolderAttributes(b, a, *dateB);
      return;
    case kCopyModeNothing: {
      if (!dateA || !dateB) return;
      bool fromA = true;
      if (mContext.state.session.gIsSyncOn) fromA = !(*dateB > *dateA);
      else if (*dateA < *dateB) return;  // a backup never dates a newer destination back
      const std::string& from = fromA ? a : b;
      const FileTime& date = fromA ? *dateA : *dateB;
      CopyFolderAttributes(from, fromA ? b : a, date);
      // Items written into the origin during the walk moved its date too; both must agree.
      auto now = ModificationDate(from);
      if (now && *now != date) mContext.fs.SetTimes(from, date, std::nullopt);
      return;
    }
    case kCopyModeSkip:
    case kCopyModeReplaceAToB:
    case kCopyModeReplaceBToA:
    case kCopyModeDeleteInA:
    case kCopyModeDeleteInB:
      return;
  }
}

std::optional<FileTime> CopyExecutor::ModificationDate(const std::string& path) {
  auto attributes = mContext.fs.GetAttributes(path);
  if (!attributes) return std::nullopt;
  return attributes.Value().modificationTime;
}

bool CopyExecutor::IsInsideDeletedItem(const std::string& path) const {
  const auto& deleted = mContext.state.gItemsDeleted;
  if (deleted.empty()) return false;
  std::string prefix = path;
  while (prefix.size() > 1) {
    if (deleted.count(prefix) != 0) return true;
    std::size_t slash = prefix.rfind('/');
    if (slash == std::string::npos || slash == 0) break;
    prefix.resize(slash);
  }
  return false;
}

const std::string& CopyExecutor::SideRoot(bool sideA) const {
  return sideA ? mContext.state.gSourceFolder : mContext.state.gDestFolder;
}

void CopyExecutor::CountVisibility(bool sideA, const std::string& path) {
  SideCopyCounters& side = mContext.state.Side(sideA);
  if (IsInvisibleName(LastPathComponent(path))) ++side.ItemInvisible;
  else ++side.ItemVisible;
}

void CopyExecutor::AddSuccessLine(std::string_view word, const std::string& path, std::string_view secondWord,
                                  const std::string& otherPath) {
  if (!mContext.state.gMakeDetailedLog) return;
  mContext.errors.AppendDetailedLine(SuccessLine(word, path, secondWord, otherPath));
}

void CopyExecutor::AddTrashLine(std::string_view word, const std::string& path) {
  RunState& state = mContext.state;
  if (!state.gMakeDetailedLog) return;
  state.gTrashDetailedLogText += SuccessLine(word, path);
  state.gTrashDetailedLogText += '\r';
}

bool CopyExecutor::ReportError(std::initializer_list<std::string_view> parts) {
  mContext.errors.RecordItemError(parts);
  return false;
}

bool CopyExecutor::ReportChanged(const std::string& path) {
  return ReportError({GLS("The item changed during the run and was skipped:"), " ", Quoted(path)});
}

bool CopyExecutor::ItemStillAsScanned(const std::string& path, const ItemSnapshot& snapshot) {
  auto matches = StillMatches(mContext.fs, path, snapshot);
  if (!matches)
    return ReportError({GLS("Can't read the item"), " ", Quoted(path), "\r",
                        FailureDescription(matches.Error(), GLS("Can't read the item"))});
  return matches.Value() || ReportChanged(path);
}

void CopyExecutor::FoldInnerTrashCounts(bool sideA) {
  SideCopyCounters& inner = sideA ? mInnerTrashA : mInnerTrashB;
  SideCopyCounters& side = mContext.state.Side(sideA);
  side.FilesTrashed += inner.FilesTrashed;
  side.FoldersTrashed += inner.FoldersTrashed;
}

void CopyExecutor::ResetInnerTrash() {
  mInnerTrashA = {};
  mInnerTrashB = {};
}

}  // namespace marigold
