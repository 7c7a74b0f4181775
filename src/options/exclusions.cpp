#include "options/exclusions.h"

#include "model/document_model.h"
#include "options/session_switches.h"
#include "util/quillon_additions.h"

namespace marigold {
namespace {

constexpr std::uint64_t kFnvOffset = 14695981039346656037ull;
constexpr std::uint64_t kFnvPrime = 1099511628211ull;

std::uint64_t HashBytes(std::string_view bytes) {
  std::uint64_t hash = kFnvOffset;
  for (const char c : bytes) hash = (hash ^ static_cast<unsigned char>(c)) * kFnvPrime;
  return hash;
}

// The hash of CaseFolded(text), folding ASCII on the way so that the usual path is not copied.
std::uint64_t FoldedHash(std::string_view text) {
  std::uint64_t hash = kFnvOffset;
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte >= 0x80) return HashBytes(CaseFolded(text));
    hash = (hash ^ (byte >= 'A' && byte <= 'Z' ? byte + ('a' - 'A') : byte)) * kFnvPrime;
  }
  return hash;
}

}  // namespace

std::int64_t CountExcludeValid(const PlistDict& document, std::int64_t sessionIndex) {
  const PlistDict* session = GetSessionDict(document, sessionIndex);
  return session ? static_cast<std::int64_t>(ExecutiveExcludeArray(*session).size()) : 0;
}

std::size_t SessionExclusions::SessionStarts(const PlistDict& session) {
  mFoldedPaths.clear();
  mHashes.clear();
  const PlistArray paths = ExecutiveExcludeArray(session);
  mFoldedPaths.reserve(paths.size());
  for (const PlistValue& path : paths) {
    std::string folded = CaseFolded(*path.AsString());
    mHashes.insert(HashBytes(folded));
    mFoldedPaths.insert(std::move(folded));
  }
  return paths.size();
}

bool SessionExclusions::IsToBeExcluded(std::string_view path) const {
  if (mHashes.empty() || !mHashes.contains(FoldedHash(path))) return false;
  return mFoldedPaths.contains(CaseFolded(path));
}

}  // namespace marigold
