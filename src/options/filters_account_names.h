// Account names of owner and group ids, looked up once per id: a scan asks for the same few
// ids a million times. Not thread-safe; one per run's worker.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <unordered_map>

namespace marigold {

class AccountNames {
 public:
  // The user name of `uid`, or nothing when the account database has none.
  const std::optional<std::string>& OwnerName(std::uint32_t uid);
  // The group name of `gid`, or nothing when the group database has none.
  const std::optional<std::string>& GroupName(std::uint32_t gid);

 private:
  std::unordered_map<std::uint32_t, std::optional<std::string>> mOwners;
  std::unordered_map<std::uint32_t, std::optional<std::string>> mGroups;
};

}  // namespace marigold
