#include "options/settings_log.h"

#include "options/settings_panel.h"
#include "options/settings_titles.h"
#include "util/strings_table.h"

namespace marigold {

namespace {

void AddLine(std::string& log, const std::string& label, const std::string& value) {
  log += "\r\t";
  log += label;
  log += ": ";
  log += value;
}

std::string YesNo(bool yes) { return GLS(yes ? "Yes" : "No"); }

}  // namespace

std::string GetLog(const PlistDict& settings) {
  const std::int64_t task = settings.GetInt("settTask");
  std::string log = "\r" + GLS("• Settings: ");
  const char* taskTitle = task == 1 ? kTaskSynchronizeTitle : task == 2 ? kTaskBackupTitle : "";
  AddLine(log, GLS("Task"), GLS(taskTitle));
  AddLine(log, GLS(task == 1 ? kExactSyncTitle : kExactBackupTitle), YesNo(settings.IsFlagOn("settExact")));
  // The two inverted boxes say "skip": they read Yes when their key is 0.
  AddLine(log, GLS(kSkipInvisibleItemsTitle), YesNo(settings.GetInt("settInvisibleItems") == 0));
  AddLine(log, GLS(kSkipLockedItemsTitle), YesNo(settings.GetInt("settLockedItems") == 0));
  static constexpr const char* kLoggedFlags[] = {
      "settResolveAlias", "settResolveSymLink", "settSkipEmptyFolders",    "settNewItemsOnly",
      "settPackagesFolders", "settMoveToTrash", "settSkipCheckPermissions",
  };
  for (const char* key : kLoggedFlags) {
    for (const SettingsBox& box : SettingsBoxes())
      if (std::string_view(box.key) == key) AddLine(log, GLS(box.title), YesNo(settings.IsFlagOn(key)));
  }
  log += "\r";
  return log;
}

}  // namespace marigold
