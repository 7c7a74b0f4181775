#include "options/conflicts_panel.h"

namespace marigold {

PlistDict DefaultConflictsDict() {
  // New sessions take file/folder conflicts with rule 1; upgraded documents get 2 on purpose.
  return PlistDict{
      {"conflictBackupRadio", 2},      {"conflictBackupAsk", 0},
      {"conflictBackupRadio2", 1},     {"conflictBackupAsk2", 0},
      {"conflictExactBackupRadio", 2}, {"conflictExactBackupAsk", 0},
      {"conflictSyncRadio", 2},        {"conflictSyncAsk", 0},
      {"conflictExactSyncRadio", 2},   {"conflictExactSyncAsk", 0},
      {"conflictFileFolderRadio", 1},  {"conflictFileFolderAsk", 0},
  };
}

}  // namespace marigold
