// The copy executor: performs a task's scan tree node by node (create, copy, replace, delete or
// trash, metadata only), makes dates and attributes agree, counts and logs each action, and
// reports each failure without stopping the run. Runs on the worker thread.
#pragma once

#include <string>
#include <vector>

#include "engine/engine_context.h"

namespace marigold {

class CopyExecutor {
 public:
  explicit CopyExecutor(EngineContext& context);

  // Performs `nodes`, the items of the folder pair folderA / folderB. `deleteParent`: the nodes
  // are the contents of a folder being deleted. False when any node failed.
  bool CopyItems(std::vector<ScanNode>& nodes, const std::string& folderA, const std::string& folderB,
                 bool deleteParent);
  // Performs one node whose paths are a and b.
  bool CopySource(const std::string& a, const std::string& b, ScanNode& node, bool deleteParent);

 private:
  EngineContext& mContext;
};

}  // namespace marigold
