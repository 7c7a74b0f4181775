// Whole runs with a real exact-sync index, made fresh for each run as a new program would make it:
// a temporary support folder holding the index folder, and one session whose folders, task and
// conflict rules a test sets.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "engine/error_path.h"
#include "engine/exact_sync_index.h"
#include "support/run_harness.h"

namespace marigold::index_test {

enum Task { kExactSync, kSync, kExactBackup, kBackup };

class IndexHarness : public run_test::RunHarness {
 public:
  IndexHarness();
  std::string A(const std::string& relative = {}) const { return Under(mSource, relative); }
  std::string B(const std::string& relative = {}) const { return Under(mDest, relative); }
  std::string IndexFolder() const { return temp.Join("support/ExactSync Indexes"); }
  std::string MainIndex() const { return IndexFolder() + "/MG3ExactSyncMainIndex.plist"; }
  std::string PairIndex(const std::string& name = "MG3ExactSyncIndex.plist") const { return IndexFolder() + "/" + name; }

  // The session's folders (created when missing), task and exact-sync conflict rules.
  void SetFolders(const std::string& source, const std::string& dest);
  void SetTask(index_test::Task task);
  void SetExactSyncRules(int radio, int ask);
  void SetSessionKey(const std::string& sub, const std::string& key, PlistValue value);

  // Runs the session with a fresh ExactSyncIndex, as a new program would have.
  RunDriver& Run(int executedBy = kExecutedByUser, FileSystem* fs = nullptr);
  RunState& state() { return mDriver->state(); }
  const PlistDict& Task0() const { return Task(0, 0); }

  std::unique_ptr<ExactSyncIndex> index;

 private:
  static std::string Under(const std::string& root, const std::string& relative) {
    return relative.empty() ? root : root + "/" + relative;
  }
  std::string mSource, mDest;
};

// An index bound to a context of its own, for calling its operations one at a time; the run's
// state says an exact synchronisation of `source` and `dest`.
struct IndexContext {
  IndexContext(const std::string& indexFolder, const std::string& source, const std::string& dest);
  LinuxFileSystem fs;
  ScriptedProxy proxy;
  RunServices services;
  PlistDict preferences;
  RunState state;
  ErrorPath errors{state, proxy, preferences};
  EngineContext context{state, fs, proxy, services, errors, preferences};
  ExactSyncIndex index;
};

// Writes a main index listing one pair and that pair's file, both as XML text.
void WriteIndexFiles(const std::string& indexFolder, const std::string& source, const std::string& dest,
                     const std::string& treeSourceXml, const std::string& treeDestXml);

}  // namespace marigold::index_test
