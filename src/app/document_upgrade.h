// Upgrade of documents written by older versions to the current layout (420), in memory.
//
// The upgrade runs thirteen version-gated steps on every session, in a fixed order. Sessions of
// documents up to 402 keep their keys flat in the session dictionary; the restructuring step moves
// them into the nine sub-dictionaries, so every step before it works on the flat keys.
//
// Damaged documents: a root whose sessionsArray is not a non-empty array of dictionaries is
// refused and left untouched. Inside a session, a sub-dictionary, list or row of the wrong type is
// replaced by its default after the steps have run, so readers always find containers of the
// right type; a wrongly typed sessionIndex becomes 0. Scalar values of other types are left alone,
// since every reader treats them as missing.
#pragma once

#include <cstdint>

#include "util/plist_value.h"

namespace marigold {

// Upgrades `root` in place from `version`; `now` is the start and end of timers that documents
// older than 320 get. False, with `root` unchanged, when it holds no session or a session is not
// a dictionary. Does not change fileVersion.
bool UpgradeDocument(PlistDict& root, std::int64_t version, PlistDate now);

// True when sessionsArray is a non-empty array whose every entry is a dictionary.
bool HasUsableSessions(const PlistDict& root);

// Removes auto-mount rows equal in "scheme://host mountPoint" to a later row, so the last stays.
// Rows without scheme or host, or without a mountPoint key, are never duplicates.
void RemoveDuplicateVolumeRows(PlistArray& rows);

// Replaces wrongly typed sub-dictionaries, lists and rows of a nested session by their defaults.
void RepairSessionShape(PlistDict& session);

}  // namespace marigold
