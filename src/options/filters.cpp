#include "options/filters.h"

#include "model/document_model.h"
#include "options/session_switches.h"

namespace marigold {

std::int64_t CountFilterValid(const PlistDict& document, std::int64_t sessionIndex) {
  const PlistDict* session = GetSessionDict(document, sessionIndex);
  return session ? static_cast<std::int64_t>(ExecutiveFilterArray(*session).size()) : 0;
}

void SessionFilters::SessionStarts(const PlistDict& session, PlistDate now) {
  mRows.clear();
  const PlistArray rows = ExecutiveFilterArray(session);
  const FilterClock clock = FilterClock::At(now);
  mRows.reserve(rows.size());
  for (const PlistValue& row : rows) mRows.push_back(CompileFilterRow(*row.AsDict(), clock));
  const PlistDict* filterDict = session.GetDict("filterDict");
  mOnlyMatching = filterDict != nullptr && filterDict->GetInt("filterCopySkip") == 1;
  mExcludeCount = mExclusions.SessionStarts(session);
}

bool SessionFilters::IsToBeFiltered(std::string_view path, const ItemAttributes& attributes) {
  if (mRows.empty()) return false;
  FilterItem item(path, attributes);
  for (const CompiledFilterRow& row : mRows) {
    switch (MatchFilterRow(row, item, mNames)) {
      case RowMatch::kMatches:
        return !mOnlyMatching;
      case RowMatch::kFails:
        continue;
      case RowMatch::kNoCreationDate:
        // An item without a creation date ends the evaluation as if no row had matched,
        // whatever the later rows would say.
        return mOnlyMatching;
    }
  }
  return mOnlyMatching;
}

}  // namespace marigold
