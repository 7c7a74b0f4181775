#include "platform/identities.h"

#include <pwd.h>
#include <unistd.h>

namespace marigold {

Identities ReadIdentities() {
  Identities ids;
  ids.uid = ::getuid();
  ids.gid = ::getgid();
  ids.euid = ::geteuid();
  ids.egid = ::getegid();
  ids.isRoot = ids.euid == 0;
  int count = ::getgroups(0, nullptr);
  if (count > 0) {
    std::vector<gid_t> all(static_cast<std::size_t>(count));
    count = ::getgroups(count, all.data());
    if (count > 0) {
      all.resize(static_cast<std::size_t>(count));
      if (all.size() > kMaxSupplementaryGroups) all.resize(kMaxSupplementaryGroups);
      ids.groups = std::move(all);
    }
  }
  return ids;
}

std::string UserFullName(uid_t uid) {
  const passwd* entry = ::getpwuid(uid);
  if (!entry) return std::to_string(uid);
  std::string gecos = entry->pw_gecos ? entry->pw_gecos : "";
  std::string fullName = gecos.substr(0, gecos.find(','));
  if (!fullName.empty()) return fullName;
  if (entry->pw_name && *entry->pw_name) return entry->pw_name;
  return std::to_string(uid);
}

IdentitySource& SystemIdentities() {
  static IdentitySource source;
  return source;
}

}  // namespace marigold
