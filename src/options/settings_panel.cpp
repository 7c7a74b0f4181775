#include "options/settings_panel.h"

#include "app/document_model.h"

namespace marigold {

PlistDict DefaultSettingsDict(std::int64_t task) {
  // settInvisibleItems and settLockedItems are stored inverted: 1 means the box is clear.
  return PlistDict{
      {"settTask", task},
      {"settExact", 0},
      {"settInvisibleItems", 1},
      {"settLockedItems", 1},
      {"settResolveAlias", 0},
      {"settResolveSymLink", 0},
      {"settSkipEmptyFolders", 0},
      {"settNewItemsOnly", 0},
      {"settPackagesFolders", 0},
      {"settMoveToTrash", 0},
      {"settCheckAttrChanged", 0},
      {"settCreateDestFolder", 0},
      {"settCreateDestFolderNameKind", 1},
      {"settCreateDestFolderCustomNameFormat", kDefaultCustomNameFormat},
      {"settSkipCheckPermissions", 0},
  };
}

}  // namespace marigold
