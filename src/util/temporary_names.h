// The names of the engine's own temporary items. Every temporary the program makes beside a
// user's items (a copy being written, a file being replaced, a case-only rename in passing, a
// probe) is named here, and only a name of exactly these shapes is taken for one: a user's
// "notes-MGTempFile.txt" is a user's file like any other.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace marigold {

enum class TemporaryKind {
  kWork,    // ".MGTempFile-" + 16 hex digits: a copy or file being written; a leftover is debris
  kRename,  // "Marigold_Temporary_Name-" + 16 hex digits: a user's item between two names
};

// A fresh name of `kind`, unique with overwhelming likelihood (64 random bits); callers still
// create it exclusively. Any thread.
std::string MakeTemporaryName(TemporaryKind kind = TemporaryKind::kWork);
// The kind of temporary `name` is, or nothing for any other name.
std::optional<TemporaryKind> TemporaryKindOf(std::string_view name);
inline bool IsTemporaryName(std::string_view name) { return TemporaryKindOf(name).has_value(); }

}  // namespace marigold
