// Runs and single calls through a FolderGuard on real temporary trees: run services that forward
// the guard's hooks to it, volume answers a test can state (a plain folder standing for a system
// disk), and a child process that works as a user without privileges.
#pragma once

#include <sys/types.h>

#include <functional>
#include <map>
#include <memory>
#include <set>
#include <string>

#include "engine/error_path.h"
#include "engine/folder_guard.h"
#include "engine_run/run_harness.h"
#include "support/as_user.h"
#include "support/fake_services.h"

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

// The services of a run whose folder hooks go to `guard`.
class GuardServices : public test::FakeServices {
 public:
  explicit GuardServices(FolderGuard& guard) : mGuard(guard) {}
  void Bind(EngineContext& context) override { mGuard.Bind(context); }
  bool FoldersAreValid(RunState& s, const std::string& a, const std::string& b, int c) override {
    return mGuard.FoldersAreValid(s, a, b, c);
  }
  void MakeItemsToDontCopyList(RunState& s) override { mGuard.MakeItemsToDontCopyList(s); }
  int CheckPrivilegesOnFiles(RunState& s, const std::string& a, const std::string& b, int mode) override {
    return mGuard.CheckPrivilegesOnFiles(s, a, b, mode);
  }
  bool TryResolveSymLinkFile(RunState& s, std::string& p, ItemAttributes& at, bool& link) override {
    return mGuard.TryResolveSymLinkFile(s, p, at, link);
  }
  bool UnlockChain(RunState& s, const std::string& item, const std::string& main, int check) override {
    return mGuard.UnlockChain(s, item, main, check);
  }
  bool RestoreOriginalAttr(RunState& s, const std::string& a, const std::string& b) override {
    return mGuard.RestoreOriginalAttr(s, a, b);
  }
  void RemoveItemOKFromRestore(RunState& s, const std::string& path) override {
    mGuard.RemoveItemOKFromRestore(s, path);
  }

 private:
  FolderGuard& mGuard;
};

// One session from side A to side B of a temporary folder, run through a FolderGuard.
class GuardRun {
 public:
  GuardRun();
  ~GuardRun();
  std::string A(const std::string& relative = {}) const { return temp.Join(relative.empty() ? "A" : "A/" + relative); }
  std::string B(const std::string& relative = {}) const { return temp.Join(relative.empty() ? "B" : "B/" + relative); }
  // Sets a key of the session's settings (settResolveSymLink, settLockedItems, ...).
  void Setting(const std::string& key, std::int64_t value);
  // Runs the session as `executedBy`; returns the driver's state.
  RunState& Run(int executedBy = kExecutedByUser);
  // The errors the last run recorded, in order.
  const std::vector<std::string>& Errors() const { return mErrors; }

  TempFolder temp;
  LinuxFileSystem fs;
  run_test::ScriptedProxy proxy;
  PlistDict preferences;
  PlistDict document;
  FolderGuard guard;
  FakeVolumes* volumes = nullptr;  // owned by `guard`

 private:
  GuardServices mServices{guard};
  std::unique_ptr<RunDriver> mDriver;
  std::vector<std::string> mErrors;
};

// A FolderGuard bound to a hand-made context, for single calls.
struct GuardCall {
  GuardCall();
  TempFolder temp;
  LinuxFileSystem fs;
  run_test::ScriptedProxy proxy;
  PlistDict preferences{{"prefOnError", 3}, {"prefLogKind", 2}};
  RunState state;
  ErrorPath errors{state, proxy, preferences};
  FolderGuard guard;
  GuardServices services{guard};
  EngineContext context{state, fs, proxy, services, errors, preferences};
  FakeVolumes* volumes = nullptr;  // owned by `guard`
};

// Clears the lock of every item under `root` (and of root), so that the folder can go.
void ClearLocks(const std::string& root);
// Gives `root` and everything inside it to `owner`.
void GiveTree(const std::string& root, uid_t owner);

}  // namespace marigold::guard_test
