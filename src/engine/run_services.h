// What a run asks of the session options and of the engine parts that build on the scan and the
// copy: folder validation and privileges, filters and exclusions, the exact-sync index, the dated
// destination sub-folder, the multiple list, volumes, scripts and the log. Each call has a
// default that means "nothing to do here", so a run works before every option exists; the real
// implementations override them.
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

class RunServices {
 public:
  virtual ~RunServices() = default;

  // The run driver hands over its context (file system, proxy, error path, preferences) once,
  // when it is built; implementations that report errors or talk to the console keep it.
  virtual void Bind(EngineContext& context);
  // A session's scan or copy begins: its executive lists (filters, exclusions) are rebuilt from
  // `session`. Called with the session's switches already read into state.session.
  virtual void SessionStarts(RunState& state, const PlistDict& session);

  // --- validation and privileges ----------------------------------------------------------
  // The task's main folders can be processed together; may rewrite state.gSourceFolder/gDestFolder
  // with resolved paths. The default accepts any pair.
  virtual bool FoldersAreValid(RunState& state, const std::string& source, const std::string& dest,
                               int forceToCase);
  // Fills the boot lists for the current task. Default: leaves them empty.
  virtual void MakeItemsToDontCopyList(RunState& state);
  // 0 when the mode can be carried out with the present privileges, 1 insufficient privileges,
  // other values: an item is locked. Default 0.
  virtual int CheckPrivilegesOnFiles(RunState& state, const std::string& source, const std::string& dest,
                                     int copyMode);
  // Why the last CheckPrivilegesOnFiles refused ("Can't write the item ..."), or "" when it
  // cannot tell.
  virtual std::string LastPrivilegeProblem();
  // Resolves a link found inside a tree in place; false skips the item. Default: true, leaving
  // the link a link.
  virtual bool TryResolveSymLinkFile(RunState& state, std::string& path, ItemAttributes& attributes,
                                     bool& isSymLink);
  // Unlocks the item or its folders up to the main folder so that `check` passes (1 writable,
  // 2 deletable, 3 creatable). Default: false (nothing unlocked).
  virtual bool UnlockChain(RunState& state, const std::string& item, const std::string& mainFolder,
                           int check);
  // Opens an item and everything inside it (immutable flag cleared, owner rights added) before it
  // is deleted whole. Default: true (nothing to open).
  virtual bool UnlockWholeItem(RunState& state, const std::string& path);
  // Puts back locks and permissions that the walk of `node` opened. Default: true.
  virtual bool RestoreOriginalAttr(RunState& state, const std::string& pathA, const std::string& pathB);
  virtual void RemoveItemOKFromRestore(RunState& state, const std::string& path);

  // --- filters and exclusions ------------------------------------------------------------
  virtual bool IsToBeExcluded(RunState& state, const std::string& path);
  virtual bool IsToBeFiltered(RunState& state, const std::string& path, const ItemAttributes& attributes);

  // --- exact-sync index ------------------------------------------------------------------
  // An index of the last exact run exists for the current task (with `which` as the caller's code).
  virtual bool ExactSyncFileExists(RunState& state, int which);
  // The item was in the index of the last run; `where` 0 = side B, 1 = side A.
  virtual bool ItWasExixting(RunState& state, const std::string& path, int where);
  // The names the index of the last exact run recorded directly in side `where`'s root (0 = side
  // B, 1 = side A). Default: none.
  virtual std::vector<std::string> IndexedRootNames(RunState& state, int where);
  // Writes the index for a task after its copy. Default: nothing.
  virtual bool WriteExactSyncIndex(RunState& state, const PlistDict& taskRecord, int which);

  // --- destination sub-folder and multiple list -------------------------------------------
  // The dated sub-folder name for the task, or nothing. Default: nothing.
  virtual std::optional<std::string> GetDestSubFolderName(RunState& state, const std::string& source);
  // The session's valid multiple-list rows ("source", "destination"). Default: none.
  virtual PlistArray ExecutiveMultiArray(RunState& state, const PlistDict& session);

  // --- volumes, scripts, log --------------------------------------------------------------
  virtual bool MountAllVolumesForSession(RunState& state, const PlistDict& session);
  virtual void UnmountAllVolumesForSession(RunState& state, const PlistDict& session);
  // `which` 1 = before the session, 2 = after it.
  virtual void ExecuteAppleScript(RunState& state, const PlistDict& session, int which);
  // Composes, saves and mails the run log. Default: nothing.
  virtual void MakeLog(RunState& state);
};

// The defaults, as one object a run can use when nothing else is given.
RunServices& DefaultRunServices();

}  // namespace marigold
