// Trees as values: a test states a tree as a map from relative paths to contents
// ({"docs/a.txt", "alpha"}, {"empty/", kDir}, {"link", LinkTo("docs")} — a key ending in "/" is a
// folder), builds it under a root, runs, and reads the root back in the same form to compare.
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <map>
#include <optional>
#include <string>

namespace marigold::trees {

using Tree = std::map<std::string, std::string>;

// The value of a folder entry.
inline const std::string kDir;
// The value of a symbolic-link entry pointing at `target`: "-> target".
std::string LinkTo(const std::string& target);

// Creates `root` (with its parents) and every entry of `tree` under it, parents first.
void Build(const std::string& root, const Tree& tree);
// Everything under `root` (temporary items included, so leftovers show); empty when `root` is missing.
Tree Read(const std::string& root);
// Every item's modification time (nanoseconds) and backup date, "mtime/backup", by relative
// path, the root itself under "."; to see that a run changed no date.
std::map<std::string, std::string> Dates(const std::string& root);

// Writes a file, creating or truncating it.
void Write(const std::string& path, const std::string& content);
// The whole content of a file, or "<missing>".
std::string ReadFile(const std::string& path);
// Sets the modification and access time of the item itself (not a link's target).
void SetModified(const std::string& path, std::int64_t seconds, long nanoseconds = 0);
// The item's modification time in nanoseconds since 1970, or -1 when it is missing.
std::int64_t MTimeNs(const std::string& path);
// The item's inode, or 0 when it is missing.
ino_t InodeOf(const std::string& path);
// The item's permission bits, or 0 when it is missing.
mode_t ModeOf(const std::string& path);
// The backup date the engine keeps with the item, or nothing.
std::optional<std::int64_t> BackupDate(const std::string& path);

}  // namespace marigold::trees
