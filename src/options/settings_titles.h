// The titles of the Settings panel's controls, defined once: the run log and the engine's
// messages quote them, and the desktop program shows the same words (each through GLS).
#pragma once

namespace marigold {

// The task radio group: the cell tagged 1 and the cell tagged 2.
inline constexpr const char* kTaskSynchronizeTitle = "Synchronize";
inline constexpr const char* kTaskBackupTitle = "Backup";

// The exact box, retitled with the task.
inline constexpr const char* kExactSyncTitle = "Exact Sync";
inline constexpr const char* kExactBackupTitle = "Exact Backup";
inline constexpr const char* kExactSyncToolTip =
    "Deletes, from a source folder, all the items not longer existing in the destination folder. And viceversa.";
inline constexpr const char* kExactBackupToolTip =
    "Deletes, from the destination folder, all the items not longer existing in the source folder";

// The check boxes. The invisible-items and locked-items boxes state the opposite of their keys.
inline constexpr const char* kSkipInvisibleItemsTitle = "Skip invisible items";
inline constexpr const char* kSkipLockedItemsTitle = "Skip locked items";
inline constexpr const char* kResolveAliasTitle = "Resolve aliases";
inline constexpr const char* kResolveSymLinkTitle = "Resolve symbolic links";
inline constexpr const char* kSkipEmptyFoldersTitle = "Skip empty folders";
inline constexpr const char* kNewItemsOnlyTitle = "Copy new items only";
inline constexpr const char* kPackagesFoldersTitle = "Treat packages as folders";
inline constexpr const char* kMoveToTrashTitle = "Move deleted items to the Trash";
inline constexpr const char* kCheckAttrChangedTitle = "Check attribute changes";
inline constexpr const char* kCreateDestFolderTitle = "Create a sub-folder in the destination";
inline constexpr const char* kSkipCheckPermissionsTitle = "Skip the privileges check";

// The fixed items of the sub-folder name pop-up; items 2 to 5 show today's value in "%@".
inline constexpr const char* kSubFolderCustomTitle = "Custom format...";
inline constexpr const char* kSubFolderSourceTitle = "Source folder name";
inline constexpr const char* kSubFolderWeekdayTitle = "Day of week (%@)";
inline constexpr const char* kSubFolderShortWeekdayTitle = "Short day of week (%@)";
inline constexpr const char* kSubFolderMonthTitle = "Month of year (%@)";
inline constexpr const char* kSubFolderShortMonthTitle = "Short month of year (%@)";

// The preferences check box that relaunches the program as root: the run's privilege messages
// quote it, so it is defined below them, here.
inline constexpr const char* kRunAsRootTitle = "Run as root";

// The page of the maker's site that explains how to back up a system volume.
inline constexpr const char* kBootBackupHelpAddress = "https://www.marigold.example/help/backup-boot-disk.html";

}  // namespace marigold
