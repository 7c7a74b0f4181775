// The exact-sync index: what existed on each side of a folder pair at the end of its last exact
// synchronisation, so that the next scan can tell an item deleted on one side from one that is
// new on the other. Files live in the index folder: the main index listing the pairs, and one
// pair index per pair.
//
// What the files promise: a pair index is replaced only by rename after it was written whole,
// so after a crash or a failed write the previous index stays in force; a main-index entry may
// outlive its file (the lookup skips it, the next write reuses its name). Any damaged, foreign
// or newer file reads as "no index", and the next write repairs it. Runs on the run's worker
// thread, one task at a time.
#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <unordered_set>
#include <vector>

#include "engine/backup_date_batch.h"
#include "engine/engine_context.h"
#include "engine/exact_index_reader.h"
#include "engine/exact_index_tree.h"

namespace marigold {

class IndexXmlWriter;

class ExactSyncIndex {
 public:
  // `indexFolder` is the index folder of the support folder (AppPaths::exactSyncIndexFolder).
  explicit ExactSyncIndex(std::string indexFolder);
  ~ExactSyncIndex();

  // The run's context (state, file system, proxy, error path); call before any other operation.
  void Bind(EngineContext& context);

  // Looks up the index of the current pair (gSourceFolder, gDestFolder) and sets
  // lastExactSyncDate. With `load` it also loads the trees for the scan, or, when the session is
  // not an exact synchronisation, removes the pair's index and entry (and returns false).
  bool ExactSyncFileExists(bool load);
  // Whether the item at `path` existed on side `where` (1 source, 0 destination) at the end of
  // the last exact synchronisation. Meaningful only after ExactSyncFileExists(true) returned true;
  // false before.
  bool ItWasExixting(const std::string& path, int where) const;
  // The names the index recorded directly in side `where`'s root (1 source, 0 destination) at the
  // end of the last exact synchronisation; empty when no index is loaded.
  std::vector<std::string> RecordedRootNames(int where) const;
  // Writes the current pair's index after its copy, taking "addToExactIndexArray" and
  // "restoreBackupDateArray" from `taskRecord`, and dates the recorded leaves with the run's
  // start. Mode 1 writes nothing when the pair already has an index file. Failures are reported
  // through the error path; the previous index then stays as it was.
  bool WriteExactSyncIndex(int mode, const PlistDict& taskRecord);
  // Records `folder` (named by its last component) and everything below it into `tree`.
  bool MakeExactSyncIndex(const std::string& folder, IndexXmlWriter& tree, int where);
  // Whether the item exists on its side, or else its counterpart on the other side (which is
  // then kept from being re-dated); `isDir` says whether it is a real folder (not a package).
  // Does not follow links.
  bool ItExistsInSourceOrDest(const std::string& path, int where, bool& isDir);
  // Moves the paths of addToExactIndexArray that lie directly in `folder` into `listing`.
  void AddToExactIndex(std::vector<std::string>& listing, const std::string& folder, int where);
  // Tells the console that the index is being written.
  void DisplayExactSyncToConsole();

  // The date of the index the last lookup found.
  const std::optional<PlistDate>& lastExactSyncDate() const { return mLastExactSyncDate; }
  const std::string& indexFolder() const { return mIndexFolder; }

 private:
  struct LoadedSide {
    const ExactIndexTree* tree = nullptr;
    ExactIndexTree::NodeId root = ExactIndexTree::kNone;
    std::size_t shift = 0;  // path components of the side's root
  };
  void ReleaseTrees();
  bool RemovePairIndex(const std::string& filePath, std::size_t entryPosition, PlistDict mainIndex);
  // Prepares the folder and the main index and finds or makes the pair's entry; the file path
  // of the pair's index, or nothing (after reporting) when the write cannot or need not go on.
  std::optional<std::string> PrepareIndexFile(int mode);
  void DateLeaf(const std::string& path);
  // Reports failure `which` (1 to 7) about `path`; always false.
  bool ReportWriteFailure(int which, const std::string& path);
  RunState& State() const { return mContext->state; }

  std::string mIndexFolder;
  EngineContext* mContext = nullptr;
  std::unique_ptr<PairIndexFile> mLoaded;
  std::optional<LoadedSide> gExactSyncDictSrc;
  std::optional<LoadedSide> gExactSyncDictDst;
  std::optional<PlistDate> mLastExactSyncDate;
  std::vector<std::string> addToExactIndexArray;
  std::vector<std::string> restoreBackupDateArray;
  std::unordered_set<std::string> mRestoreSet;  // restoreBackupDateArray, for lookups
  std::unordered_set<std::string> mAddSet;      // addToExactIndexArray as the record gave it
  BackupDateBatch* mDates = nullptr;            // the leaves' dates, while a write walks the trees
};

}  // namespace marigold
