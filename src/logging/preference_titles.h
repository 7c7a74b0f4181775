// The titles of the preferences panel's controls that the run log prints, defined once: the log
// and the desktop program's panel use the same words (each through GLS).
#pragma once

#include <cstdint>
#include <string>

namespace marigold {

// Check boxes of the General tab.
inline constexpr const char* kPrefSyncAndQuitTitle = "Sync and Quit at launch";
inline constexpr const char* kPrefAskConfirmationTitle = "Ask for confirmation";
inline constexpr const char* kPrefPreviewTitle = "Preview before copying";
inline constexpr const char* kPrefPreviewExpandedTitle = "Expand the preview";
inline constexpr const char* kPrefBeepWhenDoneTitle = "Beep when done";
inline constexpr const char* kPrefShutDownTitle = "Shut down when done";
inline constexpr const char* kPrefQuitTitle = "Quit when done";
inline constexpr const char* kPrefOnErrorLabel = "On error:";
// Log tab.
inline constexpr const char* kPrefSaveLogFileTitle = "Save the log file";
inline constexpr const char* kPrefLogFileFormatLabel = "Log file format:";
inline constexpr const char* kPrefLogKindLabel = "Log kind:";
inline constexpr const char* kPrefLogFolderLabel = "Log folder:";
inline constexpr const char* kPrefDeleteLogsTitle = "Delete old log files";
inline constexpr const char* kPrefSendEmailTitle = "Send the log via email";
inline constexpr const char* kPrefEmailToLabel = "Email to:";
// Copy tab.
inline constexpr const char* kPrefModificationDeltaTitle = "Modification date tolerance (seconds):";

// The choice titles of the pop-ups and radio groups by tag (the English keys; "" for an unknown
// tag, which the log prints as "Unknown Value").
const char* PrefOnErrorTitle(std::int64_t tag);          // 1 stop, 2 go on, 3 ask
const char* PrefSaveWhenTitle(std::int64_t tag);         // 1 always, 2 only on errors
const char* PrefLogFileFormatTitle(std::int64_t tag);    // 1 RTF, 2 text
const char* PrefLogKindTitle(std::int64_t tag);          // 1 summary, 2 detailed, 3 errors only
const char* PrefDeleteLogsPopTitle(std::int64_t tag);    // 0 by age, 1 by count

}  // namespace marigold
