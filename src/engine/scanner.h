// The scan: walks a task's two folders side by side and decides a copy mode for every item.
// Nothing on disk changes during a scan. Runs on the worker thread.
#pragma once

#include <string>

#include "engine/engine_context.h"

namespace marigold {

class Scanner {
 public:
  explicit Scanner(EngineContext& context);

  // Fills node.subItems from the folder pair pathA / pathB and recurses into sub-folders,
  // deciding each item's mode and updating the counters and tallies. False when the scan must
  // stop (the pair could not be found, or a deeper scan failed). `isRoot` enables the rules that
  // apply at the top of a tree only.
  bool ScanSingleFolder(ScanNode& node, const std::string& pathA, const std::string& pathB, bool isRoot);

  // Turns `copyMode` into 8 or 9 when the items' status times (and, with includeNames, access
  // times of items whose names differ in case) differ by more than the tolerance.
  void CheckAttrChanged(const std::string& source, const std::string& dest, int& copyMode, bool includeNames);

 private:
  EngineContext& mContext;
};

}  // namespace marigold
