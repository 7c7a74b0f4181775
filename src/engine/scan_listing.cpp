#include "engine/scan_listing.h"

#include <algorithm>

#include "platform/item_names.h"

namespace marigold {

std::vector<EntryPair> PairFolderEntries(const std::vector<FolderEntry>& a, const std::vector<FolderEntry>& b,
                                         bool includeBOnly, bool ignoreCase) {
  std::vector<EntryPair> pairs;
  pairs.reserve(a.size() + (includeBOnly ? b.size() : 0));
  std::size_t i = 0, j = 0;
  while (i < a.size() || j < b.size()) {
    if (j == b.size()) {
      pairs.push_back({&a[i++], nullptr});
      continue;
    }
    if (i == a.size()) {
      if (includeBOnly) pairs.push_back({nullptr, &b[j]});
      ++j;
      continue;
    }
    const int order = CompareItemNames(a[i].name, b[j].name);
    // Both listings share one order, so the spellings of one name lie next to each other.
    if (order == 0 || (ignoreCase && ItemNamesMatchIgnoringCase(a[i].name, b[j].name))) {
      pairs.push_back({&a[i++], &b[j++]});
    } else if (order < 0) {
      pairs.push_back({&a[i++], nullptr});
    } else {
      if (includeBOnly) pairs.push_back({nullptr, &b[j]});
      ++j;
    }
  }
  return pairs;
}

void SortListing(std::vector<FolderEntry>& entries) {
  auto before = [](const FolderEntry& x, const FolderEntry& y) { return CompareItemNames(x.name, y.name) < 0; };
  if (!std::is_sorted(entries.begin(), entries.end(), before)) std::sort(entries.begin(), entries.end(), before);
}

}  // namespace marigold
