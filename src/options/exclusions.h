// The session's exclude list as the scan asks it: a set of whole paths compared ignoring case.
// There is no prefix or pattern matching: excluding a folder's path says nothing about the paths
// inside it (the scan simply never walks into a folder it left out).
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_set>

#include "util/plist_value.h"

namespace marigold {

// The number of active exclusions (onOff not 0, path not empty) of the session at
// `sessionIndex`; 0 for an index outside the session list.
std::int64_t CountExcludeValid(const PlistDict& document, std::int64_t sessionIndex);

class SessionExclusions {
 public:
  // Rebuilds the set from the session's excludeDict; returns the number of active exclusions.
  std::size_t SessionStarts(const PlistDict& session);
  // Whether `path` equals an active exclusion ignoring case: one pass over the path and one hash
  // lookup, with no copy unless the path's hash is one of the exclusions'. Safe to call from
  // several threads once built.
  bool IsToBeExcluded(std::string_view path) const;
  std::size_t size() const { return mFoldedPaths.size(); }

 private:
  std::unordered_set<std::string> mFoldedPaths;
  std::unordered_set<std::uint64_t> mHashes;  // of the folded paths
};

}  // namespace marigold
