#include "options/exclusions.h"

#include "app/document_model.h"
#include "engine/session_switches.h"
#include "util/quillon_additions.h"

namespace marigold {

std::int64_t CountExcludeValid(const PlistDict& document, std::int64_t sessionIndex) {
  const PlistDict* session = GetSessionDict(document, sessionIndex);
  return session ? static_cast<std::int64_t>(ExecutiveExcludeArray(*session).size()) : 0;
}

std::size_t SessionExclusions::SessionStarts(const PlistDict& session) {
  mFoldedPaths.clear();
  const PlistArray paths = ExecutiveExcludeArray(session);
  mFoldedPaths.reserve(paths.size());
  for (const PlistValue& path : paths) mFoldedPaths.insert(CaseFolded(*path.AsString()));
  return paths.size();
}

bool SessionExclusions::IsToBeExcluded(std::string_view path) const {
  return !mFoldedPaths.empty() && mFoldedPaths.contains(CaseFolded(path));
}

}  // namespace marigold
