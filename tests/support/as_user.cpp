#include "support/as_user.h"

#include <grp.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>

namespace marigold {

std::string OutputAsUser(uid_t user, const std::function<std::string()>& body) {
  int ends[2];
  if (::pipe(ends) != 0) return "<pipe>";
  std::fflush(nullptr);
  const pid_t child = ::fork();
  if (child < 0) return "<fork>";
  if (child == 0) {
    ::close(ends[0]);
    if (::setgroups(0, nullptr) != 0 || ::setresgid(user, user, user) != 0 || ::setresuid(user, user, user) != 0)
      ::_exit(3);
    const std::string out = body();
    if (::write(ends[1], out.data(), out.size()) < 0) ::_exit(4);
    ::_exit(0);
  }
  ::close(ends[1]);
  std::string out;
  char buffer[4096];
  for (ssize_t n; (n = ::read(ends[0], buffer, sizeof buffer)) > 0;) out.append(buffer, static_cast<std::size_t>(n));
  ::close(ends[0]);
  int status = 0;
  ::waitpid(child, &status, 0);
  if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) out += "<child status " + std::to_string(status) + ">";
  return out;
}

void GiveTree(const std::string& root, uid_t owner) {
  ::lchown(root.c_str(), owner, owner);
  for (const auto& entry : std::filesystem::recursive_directory_iterator(root))
    ::lchown(entry.path().c_str(), owner, owner);
}

}  // namespace marigold
