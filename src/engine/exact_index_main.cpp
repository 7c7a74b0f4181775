#include "engine/exact_index_main.h"

#include "engine/exact_index_names.h"
#include "platform/plist_files.h"
#include "util/path_join.h"

namespace marigold {
namespace {

constexpr int kMaxNameTries = 10000;
constexpr std::size_t kMaxNameLength = 255;

bool IsPlainFileName(std::string_view name) {
  return !name.empty() && name != "." && name != ".." && name.find('/') == std::string_view::npos &&
         name.find('\0') == std::string_view::npos;
}

// A name nothing can be found under is free.
bool IsTaken(FileSystem& fs, const std::string& path) { return fs.GetAttributes(path).Ok(); }

}  // namespace

PairOrientation MatchPair(std::string_view storedSource, std::string_view storedDest, std::string_view source,
                          std::string_view dest) {
  if (storedSource == source && storedDest == dest) return PairOrientation::kSame;
  if (storedSource == dest && storedDest == source) return PairOrientation::kSwapped;
  return PairOrientation::kNone;
}

bool IsReadableIndexVersion(const PlistValue* version) {
  if (version == nullptr || !(version->IsInteger() || version->IsReal())) return false;
  return version->NumberOr(kExactIndexFileVersion + 1) <= kExactIndexFileVersion;
}

std::optional<MainIndexEntry> ReadMainIndexEntry(const PlistValue& value) {
  const PlistDict* entry = value.AsDict();
  if (entry == nullptr) return std::nullopt;
  const PlistValue* source = entry->Find("absolutePathSource");
  const PlistValue* dest = entry->Find("absolutePathDest");
  if (source == nullptr || dest == nullptr || !source->IsString() || !dest->IsString()) return std::nullopt;
  MainIndexEntry result{UnescapeIndexPath(*source->AsString()), UnescapeIndexPath(*dest->AsString()), std::nullopt};
  const PlistValue* name = entry->Find("indexFileName");
  if (name != nullptr && name->IsString() && IsPlainFileName(*name->AsString())) result.fileName = *name->AsString();
  return result;
}

PlistDict MakeMainIndexEntry(const std::string& source, const std::string& dest, const std::string& fileName) {
  return PlistDict{{"absolutePathSource", EscapeIndexPath(source)},
                   {"absolutePathDest", EscapeIndexPath(dest)},
                   {"indexFileName", fileName}};
}

std::optional<FoundPairIndex> FindPairIndex(FileSystem& fs, const std::string& indexFolder, const std::string& source,
                                            const std::string& dest, bool withTrees, PlistDict* mainIndex) {
  const std::string mainPath = JoinPath(indexFolder, std::string(kMainIndexFileName));
  // Reading refuses anything but a file (links followed).
  std::optional<PlistDict> main = ReadPlistDictFile(fs, mainPath);
  if (!main || !IsReadableIndexVersion(main->Find("fileVersion"))) return std::nullopt;
  const PlistArray* entries = main->GetArray("indexFilesList");
  if (entries == nullptr || entries->empty()) return std::nullopt;

  std::optional<FoundPairIndex> found;
  for (std::size_t i = 0; i < entries->size() && !found; ++i) {
    std::optional<MainIndexEntry> entry = ReadMainIndexEntry((*entries)[i]);
    if (!entry || MatchPair(entry->source, entry->dest, source, dest) == PairOrientation::kNone) continue;
    if (!entry->fileName) continue;
    const std::string filePath = JoinPath(indexFolder, *entry->fileName);
    std::optional<PairIndexFile> file = ReadPairIndexFile(fs, filePath, withTrees);
    if (!file || !file->fileVersion || *file->fileVersion > kExactIndexFileVersion) continue;
    if (!file->absolutePathSource || !file->absolutePathDest) continue;
    const PairOrientation orientation = MatchPair(*file->absolutePathSource, *file->absolutePathDest, source, dest);
    if (orientation == PairOrientation::kNone) continue;
    found = FoundPairIndex{i, filePath, orientation, std::move(*file)};
  }
  if (mainIndex != nullptr) *mainIndex = std::move(*main);
  return found;
}

std::optional<std::string> FindUniqueIndexName(FileSystem& fs, const std::string& folder) {
  const std::string_view name = kPairIndexFileName;
  const std::size_t dot = name.rfind('.');
  const std::string stem(name.substr(0, dot));
  const std::string extension(name.substr(dot));
  if (!IsTaken(fs, JoinPath(folder, std::string(name)))) return std::string(name);
  for (int n = 1; n <= kMaxNameTries; ++n) {
    std::string candidate = stem + " " + std::to_string(n) + extension;
    if (candidate.size() > kMaxNameLength) return std::nullopt;
    if (!IsTaken(fs, JoinPath(folder, candidate))) return candidate;
  }
  return std::nullopt;
}

}  // namespace marigold
