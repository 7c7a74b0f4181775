#include "engine/scanner.h"

#include <cerrno>
#include <utility>

#include "engine/copy_log_lines.h"
#include "engine/copy_mode.h"
#include "engine/error_path.h"
#include "engine/privilege_messages.h"
#include "engine/scan_listing.h"
#include "util/strings_table.h"
#include "util/temporary_names.h"

namespace marigold {

namespace {

ReplaceSide ShownSide(bool present, const ItemAttributes& attributes) {
  if (!present) return {};
  return {true, attributes.kind, attributes.IsFolder() ? 0 : attributes.size, attributes.modificationTime.seconds};
}

constexpr std::string_view kDSStore = ".DS_Store";

bool IsDeleteMode(int mode) { return mode == kCopyModeDeleteInA || mode == kCopyModeDeleteInB; }

bool IsDSStoreNode(const ScanNode& node) { return node.name == kDSStore || node.destName == kDSStore; }

ItemSide SideOf(const ItemAttributes& attributes, bool isFolder) {
  ItemSide side;
  side.present = true;
  side.isDirectory = attributes.kind == ItemKind::kFolder;
  side.isFolder = isFolder;
  side.modified = attributes.modificationTime.seconds;
  side.statusChanged = attributes.statusTime;
  side.accessed = attributes.accessTime.seconds;
  side.permissions = attributes.mode;
  side.uid = attributes.uid;
  side.gid = attributes.gid;
  return side;
}

// Sets `path` to folder + "/" + name, reusing the buffer's storage from item to item.
void JoinInto(std::string& path, const std::string& folder, const std::string& name) {
  path.assign(folder);
  if (path.empty() || path.back() != '/') path.push_back('/');
  path.append(name);
}

// The item the user has to see in a privilege report: the one the mode writes or removes.
const std::string& WrittenItem(int mode, const std::string& a, const std::string& b) {
  switch (mode) {
    case kCopyModeCopyBToA:
    case kCopyModeReplaceBToA:
    case kCopyModeMetadataBToA:
    case kCopyModeDeleteInA: return a;
    default: return b;
  }
}

}  // namespace

Scanner::Scanner(EngineContext& context) : mContext(context) {}

bool Scanner::ScanSingleFolder(ScanNode& node, const std::string& pathA, const std::string& pathB, bool isRoot) {
  mRules = ScanRules::From(mContext.state);
  PairFacts facts;
  facts.isRoot = isRoot;
  return ScanPair(node, pathA, pathB, facts);
}

Scanner::SideListing Scanner::ListSide(const std::string& path, bool mayExist) {
  if (!mayExist) return SideListing{};
  return Listed(path, mContext.fs.ListFolder(path));
}

std::vector<std::string> Scanner::ExpectFoldersB(const std::string& pathB, const std::vector<EntryPair>& pairs) {
  std::vector<std::string> folders;
  if (!mContext.fs.AllowsConcurrentCalls()) return folders;
  for (const EntryPair& pair : pairs) {
    if (pair.b == nullptr || pair.b->attributes.kind != ItemKind::kFolder || IsTemporaryName(pair.b->name)) continue;
    if (pair.a != nullptr && pair.a->attributes.kind != ItemKind::kFolder) continue;
    JoinInto(folders.emplace_back(), pathB, pair.b->name);
  }
  if (folders.empty()) return folders;
  if (!mListerB) mListerB = std::make_unique<BackgroundLister>(mContext.fs);
  mListerB->Expect(folders);
  return folders;
}

Scanner::SideListing Scanner::Listed(const std::string& path, FsResult<std::vector<FolderEntry>> result) {
  SideListing listing;
  if (result) {
    listing.state = SideListing::State::kListed;
    listing.entries = std::move(result).Value();
    SortListing(listing.entries);
    return listing;
  }
  if (result.Error().code == ENOENT) return listing;
  listing.state = SideListing::State::kUnreadable;
  mContext.errors.RecordItemError({GLS("Can't read the folder"), " \"", path, "\"\r", result.Error().Message()});
  return listing;
}

Scanner::SideListing Scanner::SingleItem(const std::string& folder, const std::string& name) {
  SideListing listing;
  auto folderAttributes = mContext.fs.GetAttributes(folder);
  if (!folderAttributes && folderAttributes.Error().code == ENOENT) return listing;
  listing.state = SideListing::State::kListed;
  auto attributes = mContext.fs.GetAttributes(ChildPath(folder, name));
  if (attributes) listing.entries.push_back(FolderEntry{name, std::move(attributes).Value()});
  return listing;
}

void Scanner::ProbeLetterCase(const std::string& pathB, PairFacts& facts) {
  FileSystem& fs = mContext.fs;
  // A dry run writes nothing, not even a probe file.
  auto probe = fs.IsCaseInsensitive(pathB, !mContext.state.mDryRun);
  // When the folder cannot tell, names match exactly: two items are never taken for one.
  facts.ignoreCase = probe && probe.Value();
  auto attributes = fs.GetAttributes(pathB);
  if (attributes && attributes.Value().kind == ItemKind::kSymlink) {
    if (auto target = fs.ResolvePath(pathB)) attributes = fs.GetAttributes(target.Value());
  }
  facts.deviceB = attributes ? attributes.Value().device : 0;
}

bool Scanner::PrepareSide(std::string& path, ItemAttributes& attributes, bool otherSidePresent, bool& isFolder) {
  RunState& state = mContext.state;
  const SessionSwitches& s = mRules.switches;
  // Links are resolved only when the session asks; otherwise a link is carried as a link.
  if (s.gIsResolveSymLinkOn && attributes.kind == ItemKind::kSymlink) {
    bool isSymLink = true;
    if (!mContext.services.folders->TryResolveSymLinkFile(state, path, attributes, isSymLink)) return false;
  }
  // Devices, pipes and sockets are not the user's documents: they are left where they are.
  if (attributes.kind != ItemKind::kFile && attributes.kind != ItemKind::kFolder &&
      attributes.kind != ItemKind::kSymlink)
    return false;
  std::string_view name = LastPathComponent(path);
  isFolder = WalksAsFolder(attributes.kind == ItemKind::kFolder, attributes.isPackage, name, otherSidePresent,
                           s.gIsTreatPackagesAsFolders);
  if (s.gIsExcludeOn && mContext.services.filter->IsToBeExcluded(state, path)) return false;
  if (s.gIsFilterOn && mContext.services.filter->IsToBeFiltered(state, path, attributes)) return false;
  if (!s.gIsInvisibleOn && IsInvisibleName(name)) return false;
  return true;
}

void Scanner::LoadBackupDate(ItemSide& side, const std::string& path) {
  if (!side.present || side.backupDateRead) return;
  side.backupDate = mContext.fs.GetBackupDate(path);
  side.backupDateRead = true;
}

int Scanner::Settle(const Decision& decision, const std::string& a, const std::string& b, const ReplaceSide& shownA,
                    const ReplaceSide& shownB) {
  RunState& state = mContext.state;
  if (decision.keepBackupDates) {
    state.restoreBackupDateArray.push_back(a);
    state.restoreBackupDateArray.push_back(b);
  }
  if (decision.ask) {
    bool changeDirection = false;
    ReplaceRequest request{a, b, decision.shownDate, decision.mode, decision.conflict, mContext.state.session.gIsSyncOn,
                           shownA, shownB};
    if (AskReplace(request, &changeDirection)) {
      // Only two files that both changed in a synchronisation may trade places; anywhere else a
      // reversed answer would write where the task must not (the source of a backup, or a
      // folder over a newer file).
      const bool reversible = decision.conflict == kConflictSyncBothChanged;
      return changeDirection && reversible ? SwapDirection(decision.mode) : decision.mode;
    }
    ++state.gConflictsSkipped;
    return decision.onRefusal;
  }
  if (decision.conflictSkipped) ++state.gConflictsSkipped;
  return decision.mode;
}

bool Scanner::AskReplace(const ReplaceRequest& request, bool* changeDirection) {
  if (changeDirection != nullptr) *changeDirection = false;
  RunState& state = mContext.state;
  // Nobody watches a timer's or a launch's run: every question is answered "skip".
  if (state.mExecutedBy != kExecutedByUser) return false;
  const int result = mContext.proxy.AskReplace(request);
  if (changeDirection != nullptr) *changeDirection = result < 0;
  const int pressed = result < 0 ? -result : result;
  if (pressed == kReplaceResultStop) {
    state.mIsCopying = false;
    state.mUserPressedStop = true;
    return false;
  }
  return pressed == kReplaceResultReplace;
}

void Scanner::RemoveLeftover(const std::string& path) {
  // A rename temporary holds a user's item between two names: it is passed by, never removed.
  if (mContext.state.mDryRun || TemporaryKindOf(LastPathComponent(path)) != TemporaryKind::kWork) return;
  if (!mContext.fs.RemoveTree(path)) return;
  mContext.errors.AppendDetailedLine(GLS("Removed the temporary item of an interrupted run") + " " + Quoted(path));
}

void Scanner::CheckAttrChanged(const std::string& source, const std::string& dest, int& copyMode,
                               bool includeNames) {
  auto a = mContext.fs.GetAttributes(source);
  auto b = mContext.fs.GetAttributes(dest);
  if (!a || !b) return;
  const bool namesDiffer = LastPathComponent(source) != LastPathComponent(dest);
  const ItemSide sideA = SideOf(a.Value(), false), sideB = SideOf(b.Value(), false);
  copyMode = AttrChangedMode(copyMode, sideA, sideB, AttrDifferenceOf(source, dest, sideA, sideB), namesDiffer,
                             includeNames, mContext.state.session.gIsSyncOn, mContext.state.gModificationDelta);
}

AttrDifference Scanner::AttrDifferenceOf(const std::string& pathA, const std::string& pathB, const ItemSide& a,
                                         const ItemSide& b) {
  // An item whose extras cannot be read compares as having none: its mode still counts.
  auto extrasA = mContext.fs.GetMetadataExtras(pathA);
  auto extrasB = mContext.fs.GetMetadataExtras(pathB);
  return CompareSettableAttributes(a, b, extrasA ? extrasA.Value() : MetadataExtras{},
                                   extrasB ? extrasB.Value() : MetadataExtras{}, mContext.state.mEuidIsRoot);
}

void Scanner::CountAdded(const ScanNode& child) {
  RunState& state = mContext.state;
  if (child.copyMode != kCopyModeNothing) ++state.gItemsToDo;
  state.tallies.Count(child.copyMode, 1);
}

void Scanner::Uncount(const ScanNode& node) {
  RunState& state = mContext.state;
  for (const ScanNode& child : node.subItems) {
    Uncount(child);
    if (child.copyMode != kCopyModeNothing) --state.gItemsToDo;
    state.tallies.Count(child.copyMode, -1);
  }
}

bool Scanner::ScanPair(ScanNode& node, const std::string& pathA, const std::string& pathB, PairFacts facts) {
  RunState& state = mContext.state;
  RunServices& services = mContext.services;
  const int folderMode = node.copyMode;

  // A pair of single files names its one item in its only child.
  const bool singleItem = !node.subItems.empty();
  std::string singleName;
  if (singleItem) {
    singleName = node.subItems.front().name;
    node.subItems.clear();
  }
  SideListing listA = singleItem ? SingleItem(pathA, singleName) : ListSide(pathA, facts.mayHaveA);
  SideListing listB;
  if (singleItem) {
    listB = SingleItem(pathB, singleName);
  } else if (mListerB && facts.mayHaveB) {
    listB = Listed(pathB, mListerB->Take(pathB));
  } else {
    listB = ListSide(pathB, facts.mayHaveB);
  }
  const bool presentA = listA.state != SideListing::State::kAbsent;
  const bool presentB = listB.state != SideListing::State::kAbsent;

  if (!presentA && !presentB) {
    if (IsDeleteMode(folderMode)) node.copyMode = kCopyModeNothing;
    mContext.errors.RecordItemError(
        {GLS("Can't find the folders"), " \"", pathA, "\" ", GLS("and"), " \r\"", pathB, "\""});
    return false;
  }
  if (listA.state == SideListing::State::kUnreadable || listB.state == SideListing::State::kUnreadable) {
    // Whatever the unreadable side holds is unknown: nothing in this folder may be decided, and a
    // folder that was to be deleted keeps what nobody looked at.
    if (IsDeleteMode(folderMode)) node.copyMode = kCopyModeNothing;
    return !facts.isRoot;
  }
  if (singleItem) facts.ignoreCase = false;  // one name, spelled alike on both sides
  if (presentB && !facts.ignoreCase.has_value()) ProbeLetterCase(pathB, facts);

  const SessionSwitches& s = mRules.switches;
  const bool listBOnly = singleItem || s.gIsSyncOn || s.gIsExactOn;
  const std::vector<EntryPair> pairs =
      PairFolderEntries(listA.entries, listB.entries, listBOnly, facts.ignoreCase.value_or(false));

  // Whatever way this folder is left, side B's sub-folders it did not enter are not listed for it.
  struct Forget {
    BackgroundLister* lister;
    std::vector<std::string> folders;
    ~Forget() {
      if (lister && !folders.empty()) lister->Forget(folders);
    }
  } expected{nullptr, ExpectFoldersB(pathB, pairs)};
  expected.lister = mListerB.get();

  FolderSurvivors survivors;
  std::string a, b;  // the item's two paths, one buffer per folder
  for (const EntryPair& pair : pairs) {
    if (!state.IsRunOn()) break;
    const std::string& name = pair.a ? pair.a->name : pair.b->name;
    const std::string& nameB = pair.b ? pair.b->name : name;
    // Left-overs of an interrupted run belong to the engine, not to the user.
    if (IsTemporaryName(name) || IsTemporaryName(nameB)) {
      JoinInto(a, pathA, name);
      JoinInto(b, pathB, nameB);
      if (pair.a) RemoveLeftover(a);
      if (pair.b) RemoveLeftover(b);
      continue;
    }
    JoinInto(a, pathA, name);
    JoinInto(b, pathB, nameB);

    if (facts.isRoot && (name == "Icon\r" || name == ".VolumeIcon.icns" ||
                         state.bootItemsToDontCopyArray.contains(a) || state.bootItemsToDontCopyArray.contains(b))) {
      survivors.itemSkipped = true;
      continue;
    }
    ItemAttributes attributesA = pair.a ? pair.a->attributes : ItemAttributes{};
    ItemAttributes attributesB = pair.b ? pair.b->attributes : ItemAttributes{};
    bool isFolderA = false, isFolderB = false;
    if ((pair.a && !PrepareSide(a, attributesA, pair.b != nullptr, isFolderA)) ||
        (pair.b && !PrepareSide(b, attributesB, pair.a != nullptr, isFolderB))) {
      survivors.itemSkipped = true;
      continue;
    }
    const bool isDSStore = name == kDSStore || nameB == kDSStore;

    ItemSide sideA = pair.a ? SideOf(attributesA, isFolderA) : ItemSide{};
    // What a replace prompt shows of each side, so that no front end reads the disk to show it.
    const ReplaceSide shownA = ShownSide(pair.a != nullptr, attributesA);
    const ReplaceSide shownB = ShownSide(pair.b != nullptr, attributesB);
    ItemSide sideB = pair.b ? SideOf(attributesB, isFolderB) : ItemSide{};
    auto decide = [&](auto&& rule) {
      Decision decision = rule();
      if (decision.needsBackupDates) {
        LoadBackupDate(sideA, a);
        LoadBackupDate(sideB, b);
        decision = rule();
      }
      return decision;
    };

    int mode = kCopyModeSkip;
    int ifSkipAddToExactIndex = -1;
    if (pair.a && pair.b) {
      ++(isFolderA ? state.scan.gAFoldersScanned : state.scan.gAFilesScanned);
      ++(isFolderB ? state.scan.gBFoldersScanned : state.scan.gBFilesScanned);
      Decision decision = decide([&] { return DecideBothPresent(sideA, sideB, isDSStore, mRules); });
      if (decision.skipItem) {
        survivors.itemSkipped = true;
        continue;
      }
      mode = Settle(decision, a, b, shownA, shownB);
      const bool namesDiffer = name != nameB;
      if (isFolderA && isFolderB) {
        if (s.gCheckAttrChanged)
          mode = AttrChangedMode(mode, sideA, sideB, AttrDifferenceOf(a, b, sideA, sideB), namesDiffer, true,
                                 s.gIsSyncOn, mRules.modificationDelta);
      } else {
        if (s.gCheckAttrChanged && mode == kCopyModeSkip)
          mode = AttrChangedMode(mode, sideA, sideB, AttrDifferenceOf(a, b, sideA, sideB), namesDiffer, true,
                                 s.gIsSyncOn, mRules.modificationDelta);
        mode = Settle(DecideFileAgainstFolder(sideA, sideB, mode, mRules), a, b, shownA, shownB);
      }
    } else {
      const bool onSideA = pair.a != nullptr;
      ++(onSideA ? (isFolderA ? state.scan.gAFoldersScanned : state.scan.gAFilesScanned)
                 : (isFolderB ? state.scan.gBFoldersScanned : state.scan.gBFilesScanned));
      // The index speaks of the other side's path: was it there after the last run?
      const bool wasOnOtherSide =
          mRules.JudgesByIndex() && (onSideA ? services.index->ItWasExixting(state, b, 0) : services.index->ItWasExixting(state, a, 1));
      const ItemSide& item = onSideA ? sideA : sideB;
      Decision decision =
          decide([&] { return DecideOneSide(item, onSideA, isDSStore, wasOnOtherSide, folderMode, mRules); });
      mode = Settle(decision, a, b, shownA, shownB);
      ifSkipAddToExactIndex = decision.ifSkipAddToExactIndex;
    }

    if (mode == kCopyModeSkip) {
      // Nothing is done with it, so a folder that was to be deleted must keep it.
      if (!isDSStore) survivors.childDiffers = true;
      continue;
    }

    const bool walks = (!pair.a || isFolderA) && (!pair.b || isFolderB);
    const bool copiedEmpty = facts.isRoot && walks &&
                             (state.bootFoldersToCopyEmptyArray.contains(a) ||
                              state.bootFoldersToCopyEmptyArray.contains(b));
    if (!s.mSkipCheckPermissions && !(copiedEmpty && state.mEuidIsRoot)) {
      const int problem = services.folders->CheckScannedPrivileges(state, a, b, mode, pair.a ? &attributesA : nullptr,
                                                                   pair.b ? &attributesB : nullptr);
      if (problem != 0) mContext.errors.RecordItemError(
          {PrivilegeProblemText(problem, WrittenItem(mode, a, b), services.folders->LastPrivilegeProblem())});
    }

    ScanNode child;
    child.name = name;
    if (pair.a && pair.b && nameB != name) child.destName = nameB;
    child.copyMode = mode;
    child.ifSkipAddToExactIndex = ifSkipAddToExactIndex;
    // A followed link stands for its target, in the checks before a change too.
    child.snapshotA = pair.a ? ItemSnapshot::Of(attributesA) : ItemSnapshot::Absent();
    child.snapshotB = pair.b ? ItemSnapshot::Of(attributesB) : ItemSnapshot::Absent();
    if (pair.a && pair.a->attributes.kind == ItemKind::kSymlink && attributesA.kind != ItemKind::kSymlink)
      child.resolvedLinks |= kResolvedLinkA;
    if (pair.b && pair.b->attributes.kind == ItemKind::kSymlink && attributesB.kind != ItemKind::kSymlink)
      child.resolvedLinks |= kResolvedLinkB;

    bool keep = true;
    if (walks && !copiedEmpty) {
      child.hasSubItems = true;
      PairFacts sub;
      sub.mayHaveA = pair.a != nullptr;
      sub.mayHaveB = pair.b != nullptr;
      sub.ignoreCase = facts.ignoreCase;
      sub.deviceB = facts.deviceB;
      // Another volume may match names differently: ask it again.
      if (pair.b && attributesB.device != facts.deviceB) sub.ignoreCase.reset();
      if (!ScanPair(child, a, b, sub)) return false;
      mode = child.copyMode;
      const bool onlyDSStore = child.subItems.size() == 1 && IsDSStoreNode(child.subItems.front());
      if (s.gIsSkipEmptyFolders && (mode == kCopyModeCopyAToB || mode == kCopyModeCopyBToA) &&
          (child.subItems.empty() || onlyDSStore))
        keep = false;
      if (mode == kCopyModeNothing && child.subItems.empty()) keep = false;
    }
    if (mode != folderMode && !isDSStore) survivors.childDiffers = true;
    if (!keep) {
      Uncount(child);
      continue;
    }
    CountAdded(child);
    node.subItems.push_back(std::move(child));
  }
  node.subItems.shrink_to_fit();

  if (IsDeleteMode(folderMode)) {
    for (const ScanNode& child : node.subItems) {
      if (IsDSStoreNode(child)) continue;
      const int m = child.copyMode;
      if (m == kCopyModeCopyAToB || m == kCopyModeReplaceAToB) survivors.childCopiesToB = true;
      if (m == kCopyModeCopyBToA || m == kCopyModeReplaceBToA) survivors.childCopiesToA = true;
    }
    const int newMode = FolderModeAfterWalk(folderMode, presentA && !presentB, presentB && !presentA,
                                            s.gIsSyncOn, survivors);
    if (newMode != folderMode) {
      node.copyMode = newMode;
      // The folder's ".DS_Store" follows the folder's fate.
      if (!node.subItems.empty() && IsDSStoreNode(node.subItems.front())) {
        ScanNode& dsStore = node.subItems.front();
        const int oldMode = dsStore.copyMode;
        if (newMode == kCopyModeNothing) {
          node.subItems.erase(node.subItems.begin());
          --state.gItemsToDo;
        } else {
          dsStore.copyMode = newMode;
          state.tallies.Count(newMode, 1);
        }
        if (oldMode >= kCopyModeCopyAToB && oldMode <= kCopyModeMetadataBToA) state.tallies.Count(oldMode, -1);
      }
    }
  }
  return true;
}

}  // namespace marigold
