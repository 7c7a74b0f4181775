// The rules a session must keep before `doc set` writes it, beyond the document's own (names,
// the selected index): each option's validation, registered in one place.
#pragma once

#include <vector>

#include "app/document_edit.h"

namespace marigold {

// Every check `doc set` runs on each session it changed, in order.
const std::vector<SessionCheck>& DocSessionChecks();

}  // namespace marigold
