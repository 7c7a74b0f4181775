// Following a symbolic link found inside a task's tree, when the session resolves links: the item
// then stands for its target, which must carry the link's own name.
#pragma once

#include <string>

#include "engine/engine_context.h"

namespace marigold {

// Replaces `path` and `attributes` by those of the link's target (every link on the way
// resolved) and sets `isSymLink` to whether the target is itself a link. False skips the item:
// a target among the items a system volume never copies is skipped silently; a dangling link, a
// loop, or a target with another name is recorded as an error first (detailed log, gTotError,
// the error prompt).
bool TryResolveSymLinkFile(EngineContext& context, std::string& path, ItemAttributes& attributes,
                           bool& isSymLink);

}  // namespace marigold
