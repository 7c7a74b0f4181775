// A volume that is not mounted leaves its mount point as an empty folder (or one with a stray hidden
// file), and a network mount that dropped can look the same. An exact task would take that folder
// for the truth and delete everything on the other side, so before such a task is kept for copying
// a person is asked, and a run with nobody to ask skips the task.
#pragma once

#include "engine/engine_context.h"
#include "engine/error_path.h"
#include "engine/scan_node.h"

namespace marigold {

// True when the scanned task may be copied as it is. False when it must be dropped: one root holds
// nothing but hidden or leftover items, or none of the items the exact-sync index recorded there,
// while the tree deletes items on the other side, and either nobody is there to confirm (an
// error is counted) or the person pressed Stop (the run stops).
bool EmptyRootAllowsTask(EngineContext& context, ErrorPath& errors, const TaskTree& tree);

}  // namespace marigold
