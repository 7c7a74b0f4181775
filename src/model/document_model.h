// The session document: its keys, defaults and shape. Every other part of the program reads and
// writes this tree; the defaults are fixed here and only here.
#pragma once

#include <cstdint>
#include <string>

#include "util/plist_value.h"

namespace marigold {

inline constexpr std::int64_t kFileVersion = 420;
inline constexpr int kFixedRowCount = 32;   // timers, multiple list, filters, exclusions
inline constexpr int kVolumeRowCount = 64;  // auto-mount volumes
inline constexpr const char* kDefaultScriptText = "-- Write or paste here your AppleScript";
inline constexpr const char* kDefaultCustomNameFormat = "'Copy of' kSrc MM-dd-yyyy 'by Robin'";

// A new document root: two sessions ("Default Sync Session", task 1; "Default Backup Session",
// task 2), fileVersion 420, sessionIndex 0.
PlistDict NewTemplate();
// Builds a session with every default and appends it to root's sessionsArray (creating it).
void AddSession(std::int64_t task, const std::string& name, PlistDict& root);
// The session AddSession appends: the nine sub-dictionaries with every default.
PlistDict DefaultSessionDict(std::int64_t task, const std::string& name);

// The session at `index`, or nullptr when the index is negative or not below the count.
const PlistDict* GetSessionDict(const PlistDict& root, std::int64_t index);
PlistDict* GetSessionDict(PlistDict& root, std::int64_t index);
std::int64_t SessionCount(const PlistDict& root);
// True when index is the "All Sessions" entry: sessionsArray count + 1.
bool IsAllSessions(const PlistDict& root, std::int64_t index);

// The task settings of a new session for `task` (1 synchronise, 2 backup).
PlistDict DefaultSettingsDict(std::int64_t task);
// The conflict rules of a new session.
PlistDict DefaultConflictsDict();

// Default rows of the per-session lists.
PlistDict DefaultTimerRow(PlistDate startAndEnd);
PlistDate DefaultTimerStartDate();  // 01 01 2004, 00:00 local time
PlistDict DefaultMultiRow();
PlistDict DefaultFilterRow();
PlistDict DefaultExcludeRow();
PlistDict DefaultVolumeRow();

// The name a session shows: its sessionName, or "Session %ld" with its 1-based number, which is
// then stored in the session (as the sessions menu does).
std::string EnsureSessionName(PlistDict& root, std::int64_t index);

}  // namespace marigold
