// The words a run uses when a privilege check refuses an item or a task, and the titles of the
// two check boxes those words point the user to.
#pragma once

#include <string>

namespace marigold {

// The settings check box that leaves locked items alone, and the preferences check box that
// relaunches the program as root. Defined once here; the panels show the same titles.
inline constexpr const char* kSkipLockedItemsTitle = "Skip locked items";
inline constexpr const char* kRunAsRootTitle = "Run as root";

// The page of the maker's site that explains how to back up a system volume.
inline constexpr const char* kBootBackupHelpAddress = "https://www.quillon.com/marigold/help/backup-boot-disk.html";

// The localised report of a refused privilege check on `item`: `result` 1 is "Insufficient
// Privileges" with the run-as-root hint, any other non-zero value "Item Locked" with the
// locked-items hint. A non-empty `reason` (which item could not be read, written or deleted) ends
// the text.
std::string PrivilegeProblemText(int result, const std::string& item, const std::string& reason = {});

}  // namespace marigold
