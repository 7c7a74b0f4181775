// Reading one pair's exact-sync index file. The program's own files are streamed into compact
// trees (see ExactIndexTree); any other property list with the same keys and types, XML or
// binary, is read through the general parser. Damaged, truncated or hostile input is refused
// (nothing is returned), never a crash.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>

#include "engine/exact_index_tree.h"
#include "platform/file_system.h"
#include "util/plist_value.h"

namespace marigold {

// A value found directly under a tree's root that is not a folder node: what the system log says
// of it.
struct IndexRootLeaf {
  std::string className;  // "string", "integer", "array", ...
  std::string content;
};

struct PairIndexFile {
  std::optional<std::int64_t> fileVersion;
  std::optional<std::string> absolutePathSource;  // bytes, escapes undone
  std::optional<std::string> absolutePathDest;
  std::optional<PlistDate> lastExactSyncDate;
  // Only when the trees were asked for. A tree's top holds the side roots by name; a root whose
  // value is not a dictionary is a leaf there and is described in the matching map.
  ExactIndexTree treeSource;
  ExactIndexTree treeDest;
  std::map<std::string, IndexRootLeaf> rootLeavesSource;
  std::map<std::string, IndexRootLeaf> rootLeavesDest;
};

// Parses index bytes whose root must be a dictionary; `withTrees` false skips the trees (the
// console only needs the date). Nothing when the bytes are not such a property list.
std::optional<PairIndexFile> ParsePairIndex(std::string_view bytes, bool withTrees);

// Reads the file at `path` (it must be a regular file; a link is followed) with ParsePairIndex.
std::optional<PairIndexFile> ReadPairIndexFile(FileSystem& fs, const std::string& path, bool withTrees);

}  // namespace marigold
