// How the names of a folder pair line up: each name of side A with the item of side B that is
// the same item, and the items only one side holds, in the scan's order (ignoring case, byte order
// breaking ties). Names match exactly unless side B's folder ignores case.
#pragma once

#include <vector>

#include "platform/file_system.h"

namespace marigold {

// One item of a folder pair: the entry each side holds, nullptr for a side that lacks it.
struct EntryPair {
  const FolderEntry* a = nullptr;
  const FolderEntry* b = nullptr;
};

// Pairs two listings sorted by CompareItemNames. `includeBOnly` false leaves out the items that
// only B holds (a plain backup never looks at them). With `ignoreCase`, names that differ only
// in letter case are one item. The pairs point into the two listings.
std::vector<EntryPair> PairFolderEntries(const std::vector<FolderEntry>& a, const std::vector<FolderEntry>& b,
                                         bool includeBOnly, bool ignoreCase);

// Sorts a listing by CompareItemNames unless it already is.
void SortListing(std::vector<FolderEntry>& entries);

}  // namespace marigold
