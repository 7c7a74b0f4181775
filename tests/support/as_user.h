// Work done as a user without privileges: root passes every permission check, so tests that
// need a refusal run their code in a forked child that has dropped to another user.
#pragma once

#include <sys/types.h>

#include <functional>
#include <string>

namespace marigold {

// Runs `body` in a forked child working as `user` (its group too, no other groups) and returns
// what `body` returned, followed by a note such as "<child status 768>" when the child failed.
std::string OutputAsUser(uid_t user, const std::function<std::string()>& body);
// Gives `root` and everything inside it to `owner`, links themselves rather than their targets.
void GiveTree(const std::string& root, uid_t owner);

}  // namespace marigold
