// Trees as values for tests that run whole tasks: a test states a tree as a map from relative
// paths to contents ({"docs/a.txt", "alpha"}, {"empty/", ""} — a key ending in "/" is a folder),
// builds it under a root, runs, and reads the root back in the same form to compare.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>

namespace marigold::trees {

using Tree = std::map<std::string, std::string>;

// Creates `root` (with its parents) and every entry of `tree` under it.
void Build(const std::string& root, const Tree& tree);
// Everything under `root`; an empty tree when `root` is missing. Links read as "-> target".
Tree Read(const std::string& root);
// Every item's modification time (nanoseconds) and backup date, "mtime/backup", by relative
// path, the root itself under "."; to see that a run changed no date.
std::map<std::string, std::string> Dates(const std::string& root);

// Writes a file, creating or truncating it.
void Write(const std::string& path, const std::string& content);
// Sets the modification time of the item itself.
void SetModified(const std::string& path, std::int64_t seconds);
// The backup date the engine keeps with the item, or nothing.
std::optional<std::int64_t> BackupDate(const std::string& path);

}  // namespace marigold::trees
