// Trees as values: a test states a tree ({"docs/a.txt", "alpha"}, {"empty/", kDir},
// {"link", LinkTo("docs")}), builds it on disk, runs, and compares what is on disk with another
// stated tree. Keys are paths relative to the tree's root; a key ending in "/" is a folder.
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <map>
#include <string>

namespace marigold::test {

using Tree = std::map<std::string, std::string>;

// The value of a folder entry.
inline const std::string kDir;
// The value of a symbolic-link entry pointing at `target`.
std::string LinkTo(const std::string& target);

// Creates `root` and every entry of `tree` under it, parents first.
void BuildTree(const std::string& root, const Tree& tree);
// Everything under `root`, in the same form (temporary items included, so leftovers show).
Tree ReadTree(const std::string& root);

// Writes a file (created or truncated).
void WriteFile(const std::string& path, const std::string& content);
// The whole content of a file, or "<missing>".
std::string ReadFile(const std::string& path);
// Sets an item's modification and access time to `seconds` (the item itself, not a link's target).
void SetMTime(const std::string& path, std::int64_t seconds, long nanoseconds = 0);
// The item's modification time in nanoseconds since 1970, or -1 when it is missing.
std::int64_t MTimeNs(const std::string& path);
// The item's inode, or 0 when it is missing.
ino_t InodeOf(const std::string& path);
// The item's permission bits, or 0 when it is missing.
mode_t ModeOf(const std::string& path);

}  // namespace marigold::test
