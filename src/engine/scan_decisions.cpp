#include "engine/scan_decisions.h"

#include <algorithm>

#include "engine/copy_mode.h"

namespace marigold {

namespace {

bool IsApplicationName(std::string_view name) {
  constexpr std::string_view kSuffix = ".app";
  if (name.size() <= kSuffix.size()) return false;
  std::string_view tail = name.substr(name.size() - kSuffix.size());
  return std::equal(tail.begin(), tail.end(), kSuffix.begin(), [](char c, char k) {
    return (c >= 'A' && c <= 'Z' ? char(c - 'A' + 'a') : c) == k;
  });
}

Decision NeedDates() {
  Decision d;
  d.needsBackupDates = true;
  return d;
}

bool DatesRead(const ItemSide& side) { return !side.present || side.backupDateRead; }

// An item on one side only of an exact synchronisation that has an index of its last run.
Decision DecideByIndex(const ItemSide& item, bool onSideA, bool isDSStore, bool wasOnOtherSide, int folderMode,
                       const ScanRules& rules) {
  const int copyMode = onSideA ? kCopyModeCopyAToB : kCopyModeCopyBToA;
  const int deleteMode = onSideA ? kCopyModeDeleteInA : kCopyModeDeleteInB;
  const std::optional<std::int64_t> rootDate =
      onSideA ? rules.mainSourceFolderBackupDate : rules.mainDestFolderBackupDate;
  const bool radio = rules.switches.gIsConflictExactSyncRadio;
  const bool ask = rules.switches.gIsConflictExactSyncAsk;

  if (!wasOnOtherSide) {
    // New on this side. Inside a folder that is being deleted it would go with the folder.
    if (folderMode != deleteMode) return Decision::Mode(copyMode);
    if (item.isDirectory || isDSStore) return Decision::Mode(deleteMode);
    std::optional<std::int64_t> shown;
    if (ask) {
      if (!item.backupDateRead) return NeedDates();
      shown = item.backupDate ? item.backupDate : rootDate ? rootDate : std::optional(item.modified);
    }
    return RuleOnConflict(deleteMode, copyMode, kConflictExactSyncParentDeleted, shown, radio, ask);
  }

  // Deleted on the other side since the last run.
  Decision deletion = Decision::Mode(deleteMode);
  deletion.ifSkipAddToExactIndex = onSideA ? 0 : 1;
  if (item.isDirectory || isDSStore || (radio && !ask)) return deletion;
  if (!item.backupDateRead) return NeedDates();
  std::optional<std::int64_t> last = item.backupDate ? item.backupDate : rootDate;
  if (!last || item.modified <= *last) return deletion;
  Decision d = RuleOnConflict(deleteMode, copyMode, kConflictExactSyncDeleted, last, radio, ask);
  d.ifSkipAddToExactIndex = deletion.ifSkipAddToExactIndex;
  return d;
}

// An item on side B only of an exact backup: it goes, unless it changed since the last backup.
Decision DecideExactBackupLeftover(const ItemSide& item, bool isDSStore, const ScanRules& rules) {
  const bool radio = rules.switches.gIsConflictExactBackupRadio;
  const bool ask = rules.switches.gIsConflictExactBackupAsk;
  const Decision deletion = Decision::Mode(kCopyModeDeleteInB);
  if (item.isDirectory || isDSStore || (radio && !ask)) return deletion;
  // Before the first backup nothing on B can have changed "since the last one".
  if (!rules.mainDestFolderBackupDate) return deletion;
  if (!item.backupDateRead) return NeedDates();
  if (item.backupDate) {
    if (item.modified <= *item.backupDate) return deletion;
    return RuleOnConflict(kCopyModeDeleteInB, kCopyModeSkip, kConflictExactBackupChanged, item.backupDate,
                          radio, ask);
  }
  return RuleOnConflict(kCopyModeDeleteInB, kCopyModeSkip, kConflictExactBackupAdded,
                        rules.mainDestFolderBackupDate, radio, ask);
}

Decision DecideSyncPair(const ItemSide& a, const ItemSide& b, std::int64_t d, bool isDSStore,
                        const ScanRules& rules) {
  const std::int64_t delta = rules.modificationDelta;
  const int mode = d > delta ? kCopyModeReplaceAToB : -d > delta ? kCopyModeReplaceBToA : kCopyModeSkip;
  const bool radio = rules.switches.gIsConflictSyncRadio;
  const bool ask = rules.switches.gIsConflictSyncAsk;
  if (mode == kCopyModeSkip || isDSStore || (radio && !ask)) return Decision::Mode(mode);
  if (!DatesRead(a) || !DatesRead(b)) return NeedDates();
  std::optional<std::int64_t> last = LastSyncDate(a, b, rules.mainDestFolderBackupDate);
  const ItemSide& replaced = mode == kCopyModeReplaceAToB ? b : a;
  if (!last || replaced.modified <= *last) return Decision::Mode(mode);
  Decision decision = RuleOnConflict(mode, kCopyModeSkip, kConflictSyncBothChanged, last, radio, ask);
  // The pair stays in conflict until it is settled: the next run must find it again.
  decision.keepBackupDates = rules.IsExact();
  return decision;
}

Decision DecideBackupPair(const ItemSide& a, const ItemSide& b, std::int64_t d, const ScanRules& rules) {
  const std::int64_t delta = rules.modificationDelta;
  const SessionSwitches& s = rules.switches;
  if (d > delta) {
    if (s.gIsConflictBackupRadio && !s.gIsConflictBackupAsk) return Decision::Mode(kCopyModeReplaceAToB);
    if (!DatesRead(a) || !DatesRead(b)) return NeedDates();
    std::optional<std::int64_t> last = LastSyncDate(a, b, rules.mainDestFolderBackupDate);
    if (!last || b.modified <= *last) return Decision::Mode(kCopyModeReplaceAToB);
    return RuleOnConflict(kCopyModeReplaceAToB, kCopyModeSkip, kConflictBackupDestChanged, last,
                          s.gIsConflictBackupRadio, s.gIsConflictBackupAsk);
  }
  if (-d > delta) {
    return RuleOnConflict(kCopyModeReplaceAToB, kCopyModeSkip, kConflictBackupDestNewer, b.modified,
                          s.gIsConflictBackupRadio2, s.gIsConflictBackupAsk2);
  }
  return Decision::Mode(kCopyModeSkip);
}

}  // namespace

ScanRules ScanRules::From(const RunState& state) {
  ScanRules rules;
  rules.switches = state.session;
  rules.modificationDelta = state.gModificationDelta;
  rules.hasIndex = state.gCompareExactSyncAtIndex;
  rules.mainSourceFolderBackupDate = state.mainSourceFolderBackupDate;
  rules.mainDestFolderBackupDate = state.mainDestFolderBackupDate;
  return rules;
}

Decision RuleOnConflict(int proposed, int onRefusal, int conflict, std::optional<std::int64_t> shownDate,
                        bool radio, bool ask) {
  Decision d;
  d.conflict = conflict;
  d.shownDate = shownDate;
  d.onRefusal = onRefusal;
  if (ask) {
    d.ask = true;
    d.mode = proposed;
  } else if (radio) {
    d.mode = proposed;
  } else {
    d.mode = onRefusal;
    d.conflictSkipped = true;
  }
  return d;
}

std::optional<std::int64_t> LastSyncDate(const ItemSide& a, const ItemSide& b,
                                         std::optional<std::int64_t> mainDestFolderBackupDate) {
  if (b.backupDate && (!a.backupDate || *a.backupDate <= *b.backupDate)) return b.backupDate;
  if (a.backupDate) return a.backupDate;
  return mainDestFolderBackupDate;
}

bool WalksAsFolder(bool isDirectory, bool isPackage, std::string_view name, bool otherSidePresent,
                   bool treatPackagesAsFolders) {
  if (!isDirectory) return false;
  if (!isPackage) return true;
  if (otherSidePresent && treatPackagesAsFolders) return !IsApplicationName(name);
  return false;
}

Decision DecideBothPresent(const ItemSide& a, const ItemSide& b, bool isDSStore, const ScanRules& rules) {
  if (a.isFolder && b.isFolder) return Decision::Mode(kCopyModeNothing);
  if (rules.switches.gIsNewItemsOnly) {
    Decision d;
    d.skipItem = true;
    return d;
  }
  const std::int64_t d = a.modified - b.modified;
  return rules.IsSync() ? DecideSyncPair(a, b, d, isDSStore, rules) : DecideBackupPair(a, b, d, rules);
}

Decision DecideFileAgainstFolder(const ItemSide& a, const ItemSide& b, int mode, const ScanRules& rules) {
  const bool fileOverFolderB = mode == kCopyModeReplaceAToB && !a.isFolder && b.isFolder;
  const bool fileOverFolderA = mode == kCopyModeReplaceBToA && a.isFolder && !b.isFolder;
  if (!fileOverFolderA && !fileOverFolderB) return Decision::Mode(mode);
  return RuleOnConflict(mode, kCopyModeSkip,
                        fileOverFolderB ? kConflictFileReplacesFolder : kConflictFolderReplacesFile, b.modified,
                        rules.switches.gIsConflictFileFolderRadio, rules.switches.gIsConflictFileFolderAsk);
}

Decision DecideOneSide(const ItemSide& item, bool onSideA, bool isDSStore, bool wasOnOtherSide, int folderMode,
                       const ScanRules& rules) {
  if (!rules.IsSync()) {
    if (onSideA) return Decision::Mode(kCopyModeCopyAToB);
    // A plain backup never lists what only the destination holds.
    if (!rules.IsExact()) return Decision::Mode(kCopyModeSkip);
    return DecideExactBackupLeftover(item, isDSStore, rules);
  }
  if (!rules.JudgesByIndex()) return Decision::Mode(onSideA ? kCopyModeCopyAToB : kCopyModeCopyBToA);
  return DecideByIndex(item, onSideA, isDSStore, wasOnOtherSide, folderMode, rules);
}

AttrDifference CompareSettableAttributes(const ItemSide& a, const ItemSide& b, const MetadataExtras& extrasA,
                                         const MetadataExtras& extrasB, bool compareOwners) {
  const bool both = a.permissions != b.permissions || (compareOwners && (a.uid != b.uid || a.gid != b.gid)) ||
                    extrasA.accessList != extrasB.accessList ||
                    extrasA.defaultAccessList != extrasB.defaultAccessList;
  // Whether every attribute of `from` is already on `to` with the same value.
  auto covered = [](const MetadataExtras& from, const MetadataExtras& to) {
    for (const auto& [name, value] : from.userAttributes) {
      const auto found = to.userAttributes.find(name);
      if (found == to.userAttributes.end() || found->second != value) return false;
    }
    return true;
  };
  return {both || !covered(extrasA, extrasB), both || !covered(extrasB, extrasA)};
}

int AttrChangedMode(int mode, const ItemSide& a, const ItemSide& b, AttrDifference difference, bool namesDiffer,
                    bool includeNames, bool isSync, std::int64_t delta) {
  if (!a.present || !b.present) return mode;
  // Nobody can set a status-change time, so it never says whether the items differ (a copy could
  // not make them agree). It only says which side's attributes were changed last: that side wins
  // in a synchronisation; a backup always carries A's.
  const bool bChangedLast = isSync && b.statusChanged > a.statusChanged;
  if (bChangedLast ? difference.towardA : difference.towardB)
    mode = bChangedLast ? kCopyModeMetadataBToA : kCopyModeMetadataAToB;
  const std::int64_t tolerance = std::max<std::int64_t>(delta, 2);
  auto compare = [&](std::int64_t timeA, std::int64_t timeB) {
    const std::int64_t d = timeA - timeB;
    if (d > tolerance) return static_cast<int>(kCopyModeMetadataAToB);
    // A backup never writes to side A.
    if (isSync && -d > tolerance) return static_cast<int>(kCopyModeMetadataBToA);
    return mode;
  };
  const bool metadata = mode == kCopyModeMetadataAToB || mode == kCopyModeMetadataBToA;
  if (includeNames && !metadata && namesDiffer) mode = compare(a.accessed, b.accessed);
  return mode;
}

int FolderModeAfterWalk(int mode, bool onlyOnA, bool onlyOnB, bool isSync, const FolderSurvivors& survivors) {
  if (mode != kCopyModeDeleteInA && mode != kCopyModeDeleteInB) return mode;
  if (!survivors.itemSkipped && !survivors.childDiffers) return mode;
  if (onlyOnA && survivors.childCopiesToB) return kCopyModeCopyAToB;
  if (onlyOnB && isSync && survivors.childCopiesToA) return kCopyModeCopyBToA;
  return kCopyModeNothing;
}

}  // namespace marigold
