#include "guard_harness.h"

#include <grp.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>

#include "app/document_model.h"
#include "app/preferences.h"

namespace marigold::guard_test {

std::optional<std::string> FakeVolumes::MountPointOf(const std::string& path) {
  std::string best = "/";
  for (const std::string& mount : mountPoints) {
    const bool inside = path == mount || (path.size() > mount.size() && path.starts_with(mount) && path[mount.size()] == '/');
    if (inside && mount.size() > best.size()) best = mount;
  }
  return best;
}

GuardRun::GuardRun() : preferences(GetDefaultPreferencesDict("/nonexistent/log folder", false)) {
  preferences.Set("prefLogKind", 2);
  preferences.Set("prefOnError", 2);
  preferences.Set("prefPreview", 0);
  trees::Build(A(), {});
  trees::Build(B(), {});
  document = run_test::MakeDocument({{A(), B(), 2}});
  auto fake = std::make_unique<FakeVolumes>(fs);
  volumes = fake.get();
  guard.UseVolumes(std::move(fake));
}

GuardRun::~GuardRun() { ClearLocks(temp.Path()); }

void GuardRun::Setting(const std::string& key, std::int64_t value) {
  GetSessionDict(document, 0)->GetDict("settingsDict")->Set(key, value);
}

RunState& GuardRun::Run(int executedBy) {
  mErrors.clear();
  mDriver = std::make_unique<RunDriver>(document, preferences, fs, proxy, mServices);
  mDriver->SetErrorObserver([this](const std::string& message) { mErrors.push_back(message); });
  mDriver->ExecuteSyncBackup(0, executedBy);
  return mDriver->state();
}

GuardCall::GuardCall() {
  auto fake = std::make_unique<FakeVolumes>(fs);
  volumes = fake.get();
  guard.UseVolumes(std::move(fake));
  guard.Bind(context);
  state.mExecutedBy = kExecutedByUser;
  state.mIsCopying = true;
  state.gMakeDetailedLog = true;
}

void ClearLocks(const std::string& root) {
  LinuxFileSystem fs;
  fs.SetLocked(root, false);
  std::error_code ec;
  for (auto it = std::filesystem::recursive_directory_iterator(root, ec);
       !ec && it != std::filesystem::recursive_directory_iterator(); it.increment(ec)) {
    fs.SetLocked(it->path().string(), false);
  }
}

void GiveTree(const std::string& root, uid_t owner) {
  ::lchown(root.c_str(), owner, owner);
  for (const auto& entry : std::filesystem::recursive_directory_iterator(root))
    ::lchown(entry.path().c_str(), owner, owner);
}

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

}  // namespace marigold::guard_test
