// Whether a task's two main folders can be processed together, checked before the task is
// scanned: both exist (links standing for them resolved), both are folders or both files, they
// differ, two files carry one name, and the rules for system volumes hold. Every refusal is
// recorded through the error path (AddErrQuickly with the caller's case). Runs on the worker.
#pragma once

#include <string>

#include "engine/boot_volumes.h"
#include "engine/engine_context.h"

namespace marigold {

class FolderValidation {
 public:
  FolderValidation(EngineContext& context, BootVolumes& volumes) : mContext(context), mVolumes(volumes) {}

  // Sets state.gSourceFolder / gDestFolder to the resolved folders (or to the "not defined"
  // texts when a folder is not given) and returns whether the task may run. `forceToCase` is
  // handed to AddErrQuickly unchanged.
  bool FoldersAreValid(const std::string& source, const std::string& dest, int forceToCase);

 private:
  // One side: found, links resolved. False when the error was recorded.
  bool ResolveSide(bool source, const std::string& path, std::string& resolved, bool& isFolder, int forceToCase);
  bool BootRulesHold(const std::string& source, const std::string& dest, int forceToCase);
  bool Refuse(std::initializer_list<std::string_view> parts, int forceToCase);

  EngineContext& mContext;
  BootVolumes& mVolumes;
};

}  // namespace marigold
