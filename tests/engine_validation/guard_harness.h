// Runs and single calls through a FolderGuard on real temporary trees: volume answers a test can
// state (a plain folder standing for a system disk), and a child process that works as a user
// without privileges.
#pragma once

#include <sys/types.h>

#include <functional>
#include <map>
#include <memory>
#include <set>
#include <string>

#include "engine/error_path.h"
#include "engine/folder_guard.h"
#include "support/run_harness.h"
#include "support/as_user.h"

namespace marigold::guard_test {

inline constexpr uid_t kNobody = 54321;

// Mount points and owner-less volumes as a test states them; everything else is on "/".
class FakeVolumes : public BootVolumes {
 public:
  explicit FakeVolumes(FileSystem& fs) : BootVolumes(fs) {}
  std::optional<std::string> MountPointOf(const std::string& path) override;
  bool IgnoresOwnership(const std::string& path) override { return ownerless.contains(path); }

  std::set<std::string> mountPoints;
  std::set<std::string> ownerless;
};

// One session from side A to side B of a temporary folder, run through a FolderGuard; errors
// are counted and the run goes on.
class GuardRun : public run_test::RunHarness {
 public:
  GuardRun();
  ~GuardRun();
  // Sets a key of the session's settings (settResolveSymLink, settLockedItems, ...).
  void Setting(const std::string& key, std::int64_t value);
  // Runs the session as `executedBy`; returns the driver's state.
  RunState& Run(int executedBy = kExecutedByUser);

  FolderGuard guard;
  FakeVolumes* volumes = nullptr;  // owned by `guard`
};

// A FolderGuard bound to a hand-made context, for single calls.
struct GuardCall {
  GuardCall();
  TempFolder temp;
  LinuxFileSystem fs;
  ScriptedProxy proxy;
  PlistDict preferences{{"prefOnError", 3}, {"prefLogKind", 2}};
  RunState state;
  ErrorPath errors{state, proxy, preferences};
  FolderGuard guard;
  FakeServices services;
  EngineContext context{state, fs, proxy, services, errors, preferences};
  FakeVolumes* volumes = nullptr;  // owned by `guard`
};


}  // namespace marigold::guard_test
