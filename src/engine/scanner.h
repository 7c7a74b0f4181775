// The scan: walks a task's two folders side by side and decides a copy mode for every item.
// Nothing on disk changes during a scan, except that a run that is not a dry run removes the
// temporary items an interrupted run left behind. Runs on the worker thread.
//
// Each folder of each side is listed once (the listing carries every item's attributes); backup
// dates are read only for the items whose decision depends on them. Names of the two sides match
// exactly unless side B's folder ignores case, which is asked of the file system once per task
// root and again wherever side B crosses into another volume. The engine's own temporary items
// are never taken for user items.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "engine/background_lister.h"
#include "engine/engine_context.h"
#include "engine/scan_decisions.h"

namespace marigold {

struct EntryPair;

class Scanner {
 public:
  explicit Scanner(EngineContext& context);

  // Fills node.subItems from the folder pair pathA / pathB and recurses into sub-folders,
  // deciding each item's mode and updating the counters and tallies. False when the scan must
  // stop (the pair could not be found, or a deeper scan failed). `isRoot` enables the rules that
  // apply at the top of a tree only. A node that arrives with one child is a pair of single
  // files: that child's name is the only item looked at.
  bool ScanSingleFolder(ScanNode& node, const std::string& pathA, const std::string& pathB, bool isRoot);

  // Turns `copyMode` into 8 or 9 when a metadata copy would change the items' settable attributes
  // (or, with includeNames, when the access times of items whose names differ in case differ by
  // more than the tolerance).
  void CheckAttrChanged(const std::string& source, const std::string& dest, int& copyMode, bool includeNames);

  // The replace prompt for one conflict. True to carry out `copyMode`. `changeDirection` is set
  // when the user reversed the direction. A run the user did not start asks nothing and returns
  // false; Stop clears mIsCopying, sets mUserPressedStop and returns false.
  bool AskReplace(const ReplaceRequest& request, bool* changeDirection);

 private:
  // What the walk of the parent folder knows about a folder pair before it is listed.
  struct PairFacts {
    bool mayHaveA = true;  // the parent listing saw the folder on side A (the root: maybe)
    bool mayHaveB = true;
    bool isRoot = false;
    std::optional<bool> ignoreCase;  // nothing: ask side B's folder once it is listed
    std::uint64_t deviceB = 0;       // the volume of side B's folder
  };
  // One side's folder, listed.
  struct SideListing {
    enum class State { kAbsent, kListed, kUnreadable } state = State::kAbsent;
    std::vector<FolderEntry> entries;
  };

  bool ScanPair(ScanNode& node, const std::string& pathA, const std::string& pathB, PairFacts facts);
  SideListing ListSide(const std::string& path, bool mayExist);
  // Side B's sub-folders among `pairs` that the scan may enter, handed to the helper that lists
  // side B ahead (none when the file system takes one call at a time).
  std::vector<std::string> ExpectFoldersB(const std::string& pathB, const std::vector<EntryPair>& pairs);
  // Reports a listing's error (when it has one) and keeps its entries in the scan's order.
  SideListing Listed(const std::string& path, FsResult<std::vector<FolderEntry>> result);
  // The listings of a pair of single files: the one item under `name` on each side.
  SideListing SingleItem(const std::string& folder, const std::string& name);
  void ProbeLetterCase(const std::string& pathB, PairFacts& facts);
  // Removes the engine's temporary item at `path` when it is a leftover work file (with a line
  // in the detailed log); other temporaries and dry runs leave it where it is.
  void RemoveLeftover(const std::string& path);
  // What a metadata copy between the two items would change (reads their extended attributes and
  // access lists).
  AttrDifference AttrDifferenceOf(const std::string& pathA, const std::string& pathB, const ItemSide& a,
                                  const ItemSide& b);
  // Resolves, classifies and filters one side of an item. False: the item is skipped.
  bool PrepareSide(std::string& path, ItemAttributes& attributes, bool otherSidePresent, bool& isFolder);
  void LoadBackupDate(ItemSide& side, const std::string& path);
  // Carries out a decision: asks when it says so, counts a skipped conflict, keeps backup dates.
  int Settle(const Decision& decision, const std::string& a, const std::string& b, const ReplaceSide& shownA,
             const ReplaceSide& shownB);
  void CountAdded(const ScanNode& child);
  void Uncount(const ScanNode& node);

  EngineContext& mContext;
  ScanRules mRules;
  // Lists side B while side A is listed; made with the first scan, when the file system allows.
  std::unique_ptr<BackgroundLister> mListerB;
};

}  // namespace marigold
