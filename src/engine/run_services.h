// What a run asks of the parts that build on the scan and the copy, split by role: folder checks
// and privileges, the item filter, the exact-sync index, the task plan (destination sub-folder and
// multiple list), the session hooks (volumes and scripts) and the run log. Every role has a
// default that means "nothing to do here", so a run works before a part exists, and a new part
// brings its own implementation of one role instead of growing a shared class.
//
// All calls come from the run's worker thread.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "engine/scan_node.h"
#include "platform/item_attributes.h"
#include "util/plist_value.h"

namespace marigold {

struct RunState;
struct EngineContext;

// What every role shares: the run hands over its context once, when it is built.
class RunRole {
 public:
  virtual ~RunRole() = default;
  // Roles that report errors or talk to the console keep the context (file system, proxy, error
  // path, preferences, clock, system log).
  virtual void Bind(EngineContext& context) { (void)context; }
};

// The task's main folders, privileges, links and locked items.
class FolderChecks : public virtual RunRole {
 public:
  // The task's main folders can be processed together; may rewrite state.gSourceFolder and
  // gDestFolder with resolved paths. Default: any pair.
  virtual bool FoldersAreValid(RunState& state, const std::string& source, const std::string& dest,
                               int forceToCase);
  // Fills the boot lists for the current task. Default: leaves them empty.
  virtual void MakeItemsToDontCopyList(RunState& state);
  // 0 when the mode can be carried out with the present privileges, 1 insufficient privileges,
  // other values: an item is locked. Default 0.
  virtual int CheckPrivilegesOnFiles(RunState& state, const std::string& source, const std::string& dest,
                                     int copyMode);
  // The same check for an item the scan has just described: `attributesA` / `attributesB` are
  // its attributes on each side (nullptr: missing there), so they need not be read again.
  // Default: the check by path.
  virtual int CheckScannedPrivileges(RunState& state, const std::string& source, const std::string& dest,
                                     int copyMode, const ItemAttributes* attributesA,
                                     const ItemAttributes* attributesB);
  // Why the last CheckPrivilegesOnFiles refused ("Can't write the item ..."), or "".
  virtual std::string LastPrivilegeProblem();
  // Resolves a link found inside a tree in place; false skips the item. Default: true, leaving
  // the link a link.
  virtual bool TryResolveSymLinkFile(RunState& state, std::string& path, ItemAttributes& attributes,
                                     bool& isSymLink);
  // Unlocks the item or its folders up to the main folder so that `check` passes (1 writable,
  // 2 deletable, 3 creatable). Default: false (nothing unlocked).
  virtual bool UnlockChain(RunState& state, const std::string& item, const std::string& mainFolder, int check);
  // Opens an item and everything inside it before it is deleted whole. Default: true.
  virtual bool UnlockWholeItem(RunState& state, const std::string& path);
  // Puts back locks and permissions that the walk opened. Default: true.
  virtual bool RestoreOriginalAttr(RunState& state, const std::string& pathA, const std::string& pathB);
  virtual void RemoveItemOKFromRestore(RunState& state, const std::string& path);
};

// Filters and exclusions.
class ItemFilter : public virtual RunRole {
 public:
  // A session's scan or copy begins: its executive lists are rebuilt from `session`. Called with
  // the session's switches already read into state.session.
  virtual void SessionStarts(RunState& state, const PlistDict& session);
  virtual bool IsToBeExcluded(RunState& state, const std::string& path);
  virtual bool IsToBeFiltered(RunState& state, const std::string& path, const ItemAttributes& attributes);
};

// The exact-sync index of the last run.
class ExactIndexStore : public virtual RunRole {
 public:
  // An index of the last exact run exists for the current task (`which` is the caller's code).
  virtual bool ExactSyncFileExists(RunState& state, int which);
  // The item was in the index of the last run; `where` 0 = side B, 1 = side A.
  virtual bool ItWasExixting(RunState& state, const std::string& path, int where);
  // The names the index of the last exact run recorded directly in side `where`'s root (0 = side
  // B, 1 = side A). Default: none.
  virtual std::vector<std::string> IndexedRootNames(RunState& state, int where);
  // Writes the index for a task after its copy. Default: nothing.
  virtual bool WriteExactSyncIndex(RunState& state, const PlistDict& taskRecord, int which);
};

// Which tasks a session has: the dated destination sub-folder and the multiple list.
class TaskPlanner : public virtual RunRole {
 public:
  // The dated sub-folder name for the task, or nothing. Default: nothing.
  virtual std::optional<std::string> GetDestSubFolderName(RunState& state, const std::string& source);
  // The session's valid multiple-list rows ("source", "destination"). Default: none.
  virtual PlistArray ExecutiveMultiArray(RunState& state, const PlistDict& session);
};

// What runs around a session: volumes mounted before it and unmounted after it, and its scripts.
// Lines and errors they record before a session's first task join that task's record; those after
// its last task join the last one.
class SessionHooks : public virtual RunRole {
 public:
  // A run (not a dry run) begins: the scripts of the session at `sessionIndex`, or of every
  // session for "All Sessions", are compiled once. Default: none.
  virtual void GetExecutiveAppleScripts(RunState& state, const PlistDict& document, std::int64_t sessionIndex);
  // False when a volume failed and the error handler ended the run.
  virtual bool MountAllVolumesForSession(RunState& state, const PlistDict& session);
  virtual void UnmountAllVolumesForSession(RunState& state, const PlistDict& session);
  // `which` 1 = before the session, 2 = after it.
  virtual void ExecuteAppleScript(RunState& state, const PlistDict& session, int which);
  // The path lies on one of the current session's volumes, and that volume is not mounted now:
  // its folder must not be taken for the volume's (empty) contents. Default: false.
  virtual bool IsOnUmountedVolume(RunState& state, const std::string& path);
};

// The run log: composed after the copy, saved, pruned and mailed.
class RunLog : public virtual RunRole {
 public:
  virtual void MakeLog(RunState& state);
};

// The roles one run consults. A role left alone is its default; the objects pointed to must
// outlive the run.
struct RunServices {
  FolderChecks* folders;
  ItemFilter* filter;
  ExactIndexStore* index;
  TaskPlanner* tasks;
  SessionHooks* hooks;
  RunLog* log;

  RunServices();
  // Hands the run's context to every distinct role object once.
  void BindRoles(EngineContext& context);
};

}  // namespace marigold
