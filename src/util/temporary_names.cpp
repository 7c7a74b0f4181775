#include "util/temporary_names.h"

#include <cstdio>
#include <random>

namespace marigold {
namespace {

constexpr std::string_view kWorkPrefix = ".MGTempFile-";
constexpr std::string_view kRenamePrefix = "Marigold_Temporary_Name-";
constexpr std::size_t kSuffixDigits = 16;

bool IsSuffix(std::string_view text) {
  if (text.size() != kSuffixDigits) return false;
  for (char c : text) {
    if (!((c >= '0' && c <= '9') || (c >= 'a' && c <= 'f'))) return false;
  }
  return true;
}

}  // namespace

std::string MakeTemporaryName(TemporaryKind kind) {
  static thread_local std::mt19937_64 generator{std::random_device{}()};
  char suffix[kSuffixDigits + 1];
  std::snprintf(suffix, sizeof suffix, "%016llx", static_cast<unsigned long long>(generator()));
  return std::string(kind == TemporaryKind::kWork ? kWorkPrefix : kRenamePrefix) + suffix;
}

std::optional<TemporaryKind> TemporaryKindOf(std::string_view name) {
  if (name.starts_with(kWorkPrefix) && IsSuffix(name.substr(kWorkPrefix.size()))) return TemporaryKind::kWork;
  if (name.starts_with(kRenamePrefix) && IsSuffix(name.substr(kRenamePrefix.size()))) return TemporaryKind::kRename;
  return std::nullopt;
}

}  // namespace marigold
