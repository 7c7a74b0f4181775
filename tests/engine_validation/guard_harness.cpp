#include "guard_harness.h"

#include "model/document_model.h"

namespace marigold::guard_test {

std::optional<std::string> FakeVolumes::MountPointOf(const std::string& path) {
  std::string best = "/";
  for (const std::string& mount : mountPoints) {
    const bool inside = path == mount || (path.size() > mount.size() && path.starts_with(mount) && path[mount.size()] == '/');
    if (inside && mount.size() > best.size()) best = mount;
  }
  return best;
}

GuardRun::GuardRun() {
  preferences.Set("prefOnError", 2);
  document = run_test::MakeDocument({{A(), B(), 2}});
  auto fake = std::make_unique<FakeVolumes>(realFs);
  volumes = fake.get();
  guard.UseVolumes(std::move(fake));
  services.guard = &guard;
}

GuardRun::~GuardRun() {
  mDriver.reset();  // before the guard it was bound to
}

void GuardRun::Setting(const std::string& key, std::int64_t value) {
  GetSessionDict(document, 0)->GetDict("settingsDict")->Set(key, value);
}

RunState& GuardRun::Run(int executedBy) { return RunHarness::Run(0, executedBy).state(); }

GuardCall::GuardCall() {
  auto fake = std::make_unique<FakeVolumes>(fs);
  volumes = fake.get();
  guard.UseVolumes(std::move(fake));
  services.guard = &guard;
  guard.Bind(context);
  state.mExecutedBy = kExecutedByUser;
  state.mIsCopying = true;
  state.gMakeDetailedLog = true;
}

}  // namespace marigold::guard_test
