// How a session's dictionary turns into the switches the engine reads while it scans and copies.
// Flags are true only when they equal 1; the conflict radios are on at tag 2, except the
// file-versus-folder radio, which is on at tag 1.
#pragma once

#include <cstdint>
#include <string>

#include "util/plist_value.h"

namespace marigold {

// The session's settings and conflict rules as the engine reads them at the start of a session.
struct SessionSwitches {
  bool gIsTimerOn = false;
  bool gIsMultiOn = false;
  bool gIsFilterOn = false;
  bool gIsExcludeOn = false;
  bool gIsInvisibleOn = false;
  bool gIsResolveAliasOn = false;
  bool gIsResolveSymLinkOn = false;
  bool gIsSkipEmptyFolders = false;
  bool gIsTreatPackagesAsFolders = false;
  bool gIsNewItemsOnly = false;
  bool gIsSyncOn = false;   // settTask is 1 (synchronise); else backup
  bool gIsExactOn = false;
  bool gIsMoveToTrash = false;
  bool gIsUnlockOn = false;
  bool mSkipCheckPermissions = false;
  bool gCheckAttrChanged = false;
  bool gCreateDestFolder = false;
  std::int64_t gCreateDestFolderNameKind = 1;
  std::string gCreateDestFolderCustomNameFormat;
  bool gIsConflictBackupRadio = false, gIsConflictBackupAsk = false;
  bool gIsConflictBackupRadio2 = false, gIsConflictBackupAsk2 = false;
  bool gIsConflictExactBackupRadio = false, gIsConflictExactBackupAsk = false;
  bool gIsConflictSyncRadio = false, gIsConflictSyncAsk = false;
  bool gIsConflictExactSyncRadio = false, gIsConflictExactSyncAsk = false;
  bool gIsConflictFileFolderRadio = false, gIsConflictFileFolderAsk = false;
};


// The switches read when a session's scan starts: timers, multiple list, filters and
// exclusions (on only when at least one row is active), and the walking settings (invisible
// items, aliases, links, empty folders, packages, new items only).
void ReadSessionSwitches(const PlistDict& session, SessionSwitches& switches);
// The task settings read before a session is scanned or copied: task kind, exact, trash,
// locked items, permissions check, attribute check, dated destination sub-folder.
void ReadTaskSettings(const PlistDict& session, SessionSwitches& switches);
// The conflict rules of the session.
void ReadConflictRules(const PlistDict& session, SessionSwitches& switches);

// The session's active filter rows (onOff not 0 and at least one criterion on), in row order.
PlistArray ExecutiveFilterArray(const PlistDict& session);
// The paths of the session's active exclusions (onOff not 0, path not empty), in row order.
PlistArray ExecutiveExcludeArray(const PlistDict& session);

}  // namespace marigold
