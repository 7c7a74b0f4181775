// The words a run uses when a privilege check refuses an item or a task, and the titles of the
// two check boxes those words point the user to.
#pragma once

#include <string>

#include "options/settings_titles.h"

namespace marigold {

// The localised report of a refused privilege check on `item`: `result` 1 is "Insufficient
// Privileges" with the run-as-root hint, any other non-zero value "Item Locked" with the
// locked-items hint. A non-empty `reason` (which item could not be read, written or deleted) ends
// the text.
std::string PrivilegeProblemText(int result, const std::string& item, const std::string& reason = {});

}  // namespace marigold
