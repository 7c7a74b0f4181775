#include "options/filters_account_names.h"

#include <grp.h>
#include <pwd.h>
#include <unistd.h>

#include <cerrno>
#include <vector>

namespace marigold {
namespace {

// Calls a getpwuid_r-style lookup with a buffer that grows while the entry does not fit.
template <typename Entry, typename Lookup>
std::optional<std::string> LookUpName(std::uint32_t id, Lookup lookup, char* Entry::*nameField) {
  std::vector<char> buffer(1024);
  Entry entry{};
  Entry* found = nullptr;
  while (true) {
    const int error = lookup(id, &entry, buffer.data(), buffer.size(), &found);
    if (error == ERANGE && buffer.size() < (1u << 20)) {
      buffer.resize(buffer.size() * 4);
      continue;
    }
    if (error != 0 || found == nullptr) return std::nullopt;
    return std::string(found->*nameField);
  }
}

}  // namespace

const std::optional<std::string>& AccountNames::OwnerName(std::uint32_t uid) {
  auto [it, inserted] = mOwners.try_emplace(uid);
  if (inserted) it->second = LookUpName<passwd>(uid, ::getpwuid_r, &passwd::pw_name);
  return it->second;
}

const std::optional<std::string>& AccountNames::GroupName(std::uint32_t gid) {
  auto [it, inserted] = mGroups.try_emplace(gid);
  if (inserted) it->second = LookUpName<group>(gid, ::getgrgid_r, &group::gr_name);
  return it->second;
}

}  // namespace marigold
