// The main exact-sync index and how a folder pair finds its own index file. The main index lists
// one entry per pair (its two paths when first indexed and the name of its file in the index
// folder); a pair matches an entry, and the entry's file, in the same or the swapped orientation.
// Entries whose file is missing or unusable are skipped, never repaired here.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "engine/exact_index_reader.h"
#include "platform/file_system.h"
#include "util/plist_value.h"

namespace marigold {

inline constexpr std::int64_t kExactIndexFileVersion = 320;
inline constexpr std::string_view kMainIndexFileName = "MG3ExactSyncMainIndex.plist";
inline constexpr std::string_view kPairIndexFileName = "MG3ExactSyncIndex.plist";

enum class PairOrientation { kNone, kSame, kSwapped };

// How the stored pair (`storedSource`, `storedDest`) stands to the run's pair; paths compare
// byte for byte.
PairOrientation MatchPair(std::string_view storedSource, std::string_view storedDest, std::string_view source,
                          std::string_view dest);

// A version an index may be read with: present and at most 320.
bool IsReadableIndexVersion(const PlistValue* version);

// One entry of "indexFilesList" with its escapes undone; nothing when it is not a dictionary or
// lacks a path. `fileName` is set only when it names a plain file of the index folder (no "/",
// not "." or ".."), so a damaged entry can never point outside the folder.
struct MainIndexEntry {
  std::string source;
  std::string dest;
  std::optional<std::string> fileName;
};
std::optional<MainIndexEntry> ReadMainIndexEntry(const PlistValue& entry);
PlistDict MakeMainIndexEntry(const std::string& source, const std::string& dest, const std::string& fileName);

// The pair index a lookup found.
struct FoundPairIndex {
  std::size_t entryPosition = 0;  // in "indexFilesList"
  std::string filePath;
  PairOrientation orientation = PairOrientation::kNone;
  PairIndexFile file;
};

// The lookup's walk: the main index in `indexFolder` must be a readable dictionary of a
// readable version with a non-empty "indexFilesList"; the first entry matching (`source`,
// `dest`) whose file is a readable index of the same pair wins. `mainIndex` receives the main
// index when one was read.
std::optional<FoundPairIndex> FindPairIndex(FileSystem& fs, const std::string& indexFolder, const std::string& source,
                                            const std::string& dest, bool withTrees, PlistDict* mainIndex = nullptr);

// A name in `folder` that nothing holds yet: "MG3ExactSyncIndex.plist", else
// "MG3ExactSyncIndex 1.plist" ... "MG3ExactSyncIndex 10000.plist". Nothing when every one is
// taken.
std::optional<std::string> FindUniqueIndexName(FileSystem& fs, const std::string& folder);

}  // namespace marigold
