// Whether the user running the program can carry out a copy mode on an item, asked before
// anything is changed: the item read must be readable, the folder written into writable, the item
// deleted or replaced deletable, the item whose metadata is set owned. A folder the user owns
// counts as writable (the run opens it and shuts it again); a locked item counts only when the
// session handles locked items and the program runs as root (only root can clear the lock). A
// package copied or deleted as one item is checked through everything inside it. Runs on the
// worker thread; the effective ids are those of the call.
#pragma once

#include <optional>
#include <string>
#include <unordered_set>

#include "engine/engine_context.h"

namespace marigold {

// Results of CheckPrivilegesOnFiles.
enum PrivilegeResult : int { kPrivilegesOK = 0, kPrivilegesInsufficient = 1, kPrivilegesItemLocked = 2 };

class PrivilegeCheck {
 public:
  explicit PrivilegeCheck(EngineContext& context) : mContext(context) {}

  // 0 when `copyMode` can be carried out on the pair `source` (side A) / `dest` (side B), 1 when
  // the user lacks a right, 2 when an item in the way is locked and will not be unlocked. Items
  // missing on a side are not looked at. LastProblem() then says which item and why.
  int CheckPrivilegesOnFiles(const std::string& source, const std::string& dest, int copyMode);
  // The same with each side's attributes already read (nullptr: missing on that side), for the
  // items of a scan; what it learns about folders holds until the next check by path.
  int CheckScannedPrivileges(const std::string& source, const std::string& dest, int copyMode,
                             const ItemAttributes* attributesA, const ItemAttributes* attributesB);
  // The reason of the last refusal ("Can't read the item ..."); empty after a success.
  const std::string& LastProblem() const { return mProblem; }

 private:
  enum class Need { kRead, kDelete };
  int CanRead(const std::string& path, const ItemAttributes& attributes);
  int CanWriteInto(const std::string& folder);
  int CanDelete(const std::string& path, const ItemAttributes& attributes);
  int CanSetMetadata(const std::string& path, const ItemAttributes& attributes);
  // Every item inside the package allows `need`.
  int CheckFilePackagePermissions(const std::string& path, Need need);
  int Locked();
  int Refuse(int result, const char* what, const std::string& path, const char* tail);

  EngineContext& mContext;
  std::string mProblem;
  // The scan asks about one folder's items in a row: the last folder found writable (or still to
  // be made) is not asked about again.
  std::string mWritableFolder;
  // Its attributes, when it exists (a delete in it asks whether it is sticky).
  std::optional<ItemAttributes> mWritableFolderAttributes;
  // Folders found missing: the run makes them, and their sub-folders too.
  std::unordered_set<std::string> mFoldersToMake;
};

}  // namespace marigold
