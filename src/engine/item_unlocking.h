// Opening locked and read-only items so that a copy can write or delete them, and putting the
// locks and permissions back afterwards.
//
// The restore record keeps, for each path the run opened, whether it was locked and the mode it
// had, and the folder whose walk opened it (the folder the change was made in). When that walk
// ends, RestoreOriginalAttr puts those paths back; the walk of the task's roots puts back whatever
// is left. An item that was replaced or deleted leaves the record. Nothing outside the task's main
// folder is ever opened. Runs on the worker thread.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>

#include "engine/engine_context.h"

namespace marigold {

// What UnlockCheck tests.
enum UnlockCheckCode : int { kCheckWritable = 1, kCheckDeletable = 2, kCheckCreatable = 3 };

class ItemUnlocking {
 public:
  explicit ItemUnlocking(EngineContext& context) : mContext(context) {}

  // Opens `item` and then its folders, one at a time up to and including `mainFolder`, until
  // UnlockCheck(item, check) passes: first (when the session handles locked items) by clearing
  // locks, then by giving the owner full rights. Each path opened is recorded. True when the
  // check passes; false when it never did (what was opened stays recorded and is put back).
  bool UnlockChain(const std::string& item, const std::string& mainFolder, int check);
  // 1: the item may be written (a folder: items created in it); 2: it may be deleted; 3: a
  // folder can be created at `path` (it is created, its parent must exist). Other codes: false.
  bool UnlockCheck(const std::string& path, int check);
  // Puts back what the walks of folder `pathA` or `pathB` opened; for the task's two roots,
  // everything still recorded. False when nothing was recorded for them or a restore failed.
  bool RestoreOriginalAttr(const std::string& pathA, const std::string& pathB);
  // Forgets `path` and everything inside it: it was replaced or deleted.
  void RemoveItemOKFromRestore(const std::string& path);
  // Clears the lock and gives the owner full rights on `path` and, depth first, on everything
  // inside it; nothing is recorded (the item is about to go). False when any item stayed shut.
  bool UnlockWholeItem(const std::string& path);

  // Paths opened and not yet put back.
  std::size_t PendingRestores() const { return mRecord.size(); }

 private:
  struct Entry {
    std::string walkFolder;  // the folder whose walk opened the path
    bool lock = false;       // the item was locked
    std::optional<std::uint32_t> perm;  // its mode before it was opened
  };
  void AddItemDictToRestoreToPath(const std::string& path, const std::string& walkFolder, bool lock,
                                  std::optional<std::uint32_t> perm);
  bool Restore(const std::string& path, const Entry& entry);

  EngineContext& mContext;
  std::map<std::string, Entry> mRecord;  // sorted, so an item comes after the folders holding it
};

}  // namespace marigold
