#include "engine/task_records.h"

#include <string>

namespace marigold {
namespace {

void SetSideCounters(PlistDict& record, const char* side, const SideCopyCounters& c) {
  const std::string prefix(side);
  record.Set(prefix + "FoldersCreated", c.FoldersCreated);
  record.Set(prefix + "FilesRenamed", c.FilesRenamed);
  record.Set(prefix + "FilesCopied", c.FilesCopied);
  record.Set(prefix + "FilesReplaced", c.FilesReplaced);
  record.Set(prefix + "FoldersDeleted", c.FoldersDeleted);
  record.Set(prefix + "FilesDeleted", c.FilesDeleted);
  record.Set(prefix + "ItemInvisible", c.ItemInvisible);
  record.Set(prefix + "ItemVisible", c.ItemVisible);
}

}  // namespace

PlistDict MakeTaskRecord(std::int64_t taskIndex, const RunState& state) {
  PlistArray restore;
  restore.reserve(state.restoreBackupDateArray.size());
  for (const std::string& path : state.restoreBackupDateArray) restore.emplace_back(path);
  return PlistDict{
      {"taskIndex", taskIndex},
      {"gSourceFolder", state.gSourceFolder},
      {"gDestFolder", state.gDestFolder},
      {"gAFoldersScanned", state.scan.gAFoldersScanned},
      {"gAFilesScanned", state.scan.gAFilesScanned},
      {"gBFoldersScanned", state.scan.gBFoldersScanned},
      {"gBFilesScanned", state.scan.gBFilesScanned},
      {"gTotError", state.gTotError},
      {"gItemsToDo", state.gItemsToDo},
      {"gConflictsSkipped", state.gConflictsSkipped},
      {"gDetailedLogText", state.gDetailedLogText},
      {"restoreBackupDateArray", std::move(restore)},
  };
}

void StoreCopyCounters(const RunState& state, PlistDict& record) {
  SetSideCounters(record, "gA", state.gA);
  SetSideCounters(record, "gB", state.gB);
  record.Set("gTotError", record.GetInt("gTotError") + state.gTotError);
  record.Set("gDetailedLogText", record.GetString("gDetailedLogText") + state.gDetailedLogText);
}

void AddCopyCounters(SideCopyCounters& total, const SideCopyCounters& add) {
  total.FoldersCreated += add.FoldersCreated;
  total.FilesCopied += add.FilesCopied;
  total.FilesReplaced += add.FilesReplaced;
  total.FilesRenamed += add.FilesRenamed;
  total.FoldersDeleted += add.FoldersDeleted;
  total.FilesDeleted += add.FilesDeleted;
  total.FoldersTrashed += add.FoldersTrashed;
  total.FilesTrashed += add.FilesTrashed;
  total.ItemVisible += add.ItemVisible;
  total.ItemInvisible += add.ItemInvisible;
}

void AddToLastTaskRecord(PlistArray& tasks, std::string& text, std::int64_t& errors) {
  PlistDict* last = tasks.empty() ? nullptr : tasks.back().AsDict();
  if (last != nullptr && (!text.empty() || errors != 0)) {
    last->Set("gDetailedLogText", last->GetString("gDetailedLogText") + text);
    last->Set("gTotError", last->GetInt("gTotError") + errors);
  }
  text.clear();
  errors = 0;
}

}  // namespace marigold
