// Who the process runs as, read once at start-up: real and effective user and group, the
// supplementary groups, and whether the effective user is root.
#pragma once

#include <sys/types.h>

#include <cstddef>
#include <string>
#include <vector>

namespace marigold {

inline constexpr std::size_t kMaxSupplementaryGroups = 1000;

struct Identities {
  uid_t uid = 0;   // real user id
  gid_t gid = 0;   // real group id
  uid_t euid = 0;  // effective user id
  gid_t egid = 0;  // effective group id
  std::vector<gid_t> groups;  // supplementary groups, at most kMaxSupplementaryGroups
  bool isRoot = false;        // euid == 0
};

// Reads the identities of the calling process. Never fails: an unreadable group list is empty.
Identities ReadIdentities();

// The user's full name from the password database (the first field of the comment), else the
// login name, else the decimal user id.
std::string UserFullName(uid_t uid);

// Who runs the program and what users are called, as a seam: start-up and the run log ask it, and
// tests answer with fixed ids and names. Any thread.
class IdentitySource {
 public:
  virtual ~IdentitySource() = default;
  virtual Identities Read() const { return ReadIdentities(); }
  virtual std::string FullName(uid_t uid) const { return UserFullName(uid); }
};

// The process's own identities and the system's password database.
IdentitySource& SystemIdentities();

}  // namespace marigold
