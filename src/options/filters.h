// The session's filters and exclusions as a run consults them. SessionStarts rebuilds both
// executive lists from the session's dictionaries once per session; the scan then asks, for each
// item, IsToBeExcluded and IsToBeFiltered. Rows are combined with OR, the criteria of a row with
// AND; the copy/skip switch says whether matching items are the only ones kept (1) or the ones
// left out (any other value). Use from the run's worker thread only.
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "options/exclusions.h"
#include "options/filters_account_names.h"
#include "options/filters_criteria.h"
#include "platform/item_attributes.h"
#include "util/plist_value.h"
#include "util/quillon_additions.h"

namespace marigold {

// The number of active filter rows (onOff not 0 and at least one criterion on) of the session at
// `sessionIndex`; 0 for an index outside the session list.
std::int64_t CountFilterValid(const PlistDict& document, std::int64_t sessionIndex);

class SessionFilters {
 public:
  // Rebuilds the executive filter rows and exclusions from `session`. `now` fixes what "today"
  // and "yesterday" mean for the whole session.
  void SessionStarts(const PlistDict& session, PlistDate now = Now());

  // The number of active rows and exclusions of the session last started.
  std::size_t CountFilterValid() const { return mRows.size(); }
  std::size_t CountExcludeValid() const { return mExcludeCount; }

  bool IsToBeExcluded(std::string_view path) const { return mExclusions.IsToBeExcluded(path); }
  // Whether the item at `path` (attributes read without following links, or the link's target
  // when links are resolved) is to be left out of the run.
  bool IsToBeFiltered(std::string_view path, const ItemAttributes& attributes);

 private:
  std::vector<CompiledFilterRow> mRows;
  bool mOnlyMatching = false;  // filterCopySkip is 1
  SessionExclusions mExclusions;
  std::size_t mExcludeCount = 0;
  AccountNames mNames;
};

}  // namespace marigold
