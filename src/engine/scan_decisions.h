// The scan's decisions as pure functions: what each side holds and the session's rules go in, a
// copy mode (or a question for the user) comes out. Nothing here touches the disk or asks anyone,
// so each row of a decision table is a test case. The scanner gathers the facts, reads backup
// dates only when a decision says it needs them, asks the questions and counts the results.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "engine/copy_mode.h"
#include "engine/run_state.h"

namespace marigold {

// What the scan knows of an item on one side. Dates are whole seconds since 1970 (the fraction
// of a second never counts when dates are compared).
struct ItemSide {
  bool present = false;
  bool isDirectory = false;  // a folder on disk, package or not
  bool isFolder = false;     // walked as a folder; a package that stays one item is not
  std::int64_t modified = 0;
  FileTime statusChanged;  // to the nanosecond: it only orders two changes
  std::int64_t accessed = 0;
  // What a metadata copy can carry; the status-change time itself can never be set.
  std::uint32_t permissions = 0;
  std::uint32_t uid = 0;
  std::uint32_t gid = 0;
  // Reading a backup date costs a system call per item, so it is read only when a rule needs it.
  bool backupDateRead = false;
  std::optional<std::int64_t> backupDate;
};

// The rules one task's scan decides by.
struct ScanRules {
  SessionSwitches switches;
  std::int64_t modificationDelta = 0;  // gModificationDelta
  bool hasIndex = false;               // gCompareExactSyncAtIndex
  std::optional<std::int64_t> mainSourceFolderBackupDate;
  std::optional<std::int64_t> mainDestFolderBackupDate;

  static ScanRules From(const RunState& state);
  bool IsSync() const { return switches.gIsSyncOn; }
  bool IsExact() const { return switches.gIsExactOn; }
  // Deletions are judged against the index of the last exact synchronisation.
  bool JudgesByIndex() const { return switches.gIsSyncOn && switches.gIsExactOn && hasIndex; }
};

// Conflict kinds, as the replace prompt words them.
enum ConflictKind : int {
  kConflictNone = 0,
  kConflictBackupDestChanged = 11,
  kConflictBackupDestNewer = 12,
  kConflictExactBackupChanged = 21,
  kConflictExactBackupAdded = 22,
  kConflictSyncBothChanged = 31,
  kConflictExactSyncDeleted = 41,
  kConflictExactSyncParentDeleted = 42,
  kConflictFileReplacesFolder = 51,
  kConflictFolderReplacesFile = 52,
};

// The outcome of one decision step.
struct Decision {
  int mode = kCopyModeSkip;  // the mode to carry out (when `ask`: the one proposed)
  // Ask the user: yes keeps `mode`, no gives `onRefusal` and counts a skipped conflict.
  bool ask = false;
  int onRefusal = kCopyModeSkip;
  int conflict = kConflictNone;
  std::optional<std::int64_t> shownDate;  // the reference date the prompt shows
  bool conflictSkipped = false;   // the rule refused without asking: `mode` is the refusal
  bool keepBackupDates = false;   // both paths go to restoreBackupDateArray
  int ifSkipAddToExactIndex = -1;
  bool skipItem = false;          // leave the item out of the tree altogether (new items only)
  // The decision needs the items' backup dates: read them and decide again.
  bool needsBackupDates = false;

  static Decision Mode(int mode) { Decision d; d.mode = mode; return d; }
};

// A conflict settled by its rule: with Ask the user decides; else Radio keeps the proposal;
// else the refusal applies and is counted.
Decision RuleOnConflict(int proposed, int onRefusal, int conflict, std::optional<std::int64_t> shownDate,
                        bool radio, bool ask);

// The last run both items took part in: the later of their backup dates (B's when A's is not
// later), else the destination root's backup date. Nothing when none is known.
std::optional<std::int64_t> LastSyncDate(const ItemSide& a, const ItemSide& b,
                                         std::optional<std::int64_t> mainDestFolderBackupDate);

// Whether a directory is walked as a folder. A package stays one item when the other side lacks
// it; when both sides hold it and packages are treated as folders only applications stay whole.
bool WalksAsFolder(bool isDirectory, bool isPackage, std::string_view name, bool otherSidePresent,
                   bool treatPackagesAsFolders);

// Both sides hold the item. Two folders give 1 (walked); otherwise the modification dates and the
// backup or synchronisation conflict rules decide. New-items-only leaves such an item out.
Decision DecideBothPresent(const ItemSide& a, const ItemSide& b, bool isDSStore, const ScanRules& rules);

// A file about to replace a folder of the same name (mode 4 over a folder on B, 5 over one on A)
// goes through the file-against-folder rule; any other mode is kept.
Decision DecideFileAgainstFolder(const ItemSide& a, const ItemSide& b, int mode, const ScanRules& rules);

// Only one side holds the item (`onSideA` tells which). `wasOnOtherSide`: the index of the last
// exact synchronisation lists the item on the other side (it was deleted there since).
// `folderMode` is the mode of the folder being walked (6 or 7 while it is being deleted).
Decision DecideOneSide(const ItemSide& item, bool onSideA, bool isDSStore, bool wasOnOtherSide,
                       int folderMode, const ScanRules& rules);

// What a metadata copy would change on each side: `towardB` when copying A's attributes onto B
// would change B, `towardA` the other way. A user attribute that only the receiving side holds
// stays there after a copy, so it makes no difference in that direction.
struct AttrDifference {
  bool towardB = false;
  bool towardA = false;
};
// Compares what a metadata copy can set: the mode, the owners (with `compareOwners`, that is when
// running as root), user extended attributes and access lists.
AttrDifference CompareSettableAttributes(const ItemSide& a, const ItemSide& b, const MetadataExtras& extrasA,
                                         const MetadataExtras& extrasB, bool compareOwners);

// Attribute changes: when `difference` says a metadata copy would change something, `mode` turns
// into 8 (A's attributes to B), or in a synchronisation into 9 when B's attributes were changed
// last. Then, when `includeNames` and the names differ in case, access times apart by more than
// max(delta, 2) seconds give 8 or 9 as well. Missing items leave `mode` as it is.
int AttrChangedMode(int mode, const ItemSide& a, const ItemSide& b, AttrDifference difference, bool namesDiffer,
                    bool includeNames, bool isSync, std::int64_t delta);

// What is known, after its walk, about the items of a folder that was to be deleted (mode 6 or 7).
struct FolderSurvivors {
  bool itemSkipped = false;       // an item was left out (filtered, excluded, unreadable, ...)
  bool childDiffers = false;      // a child other than ".DS_Store" got another mode
  bool childCopiesToB = false;    // a child other than ".DS_Store" has mode 2 or 4
  bool childCopiesToA = false;    // ... mode 3 or 5
};

// The mode of a folder that was to be deleted once its items are known: a folder that keeps
// items cannot go as a whole. It becomes 1, or 2 (3) when it must be re-created on the side that
// lost it because something is copied into it.
int FolderModeAfterWalk(int mode, bool onlyOnA, bool onlyOnB, bool isSync, const FolderSurvivors& survivors);

}  // namespace marigold
