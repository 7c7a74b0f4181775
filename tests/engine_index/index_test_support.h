// Whole runs with a real exact-sync index: run services that hand the index hooks to an
// ExactSyncIndex, a temporary support folder holding the index folder, and one session whose
// folders, task and conflict rules a test sets.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "engine/error_path.h"
#include "engine/exact_sync_index.h"
#include "engine_run/run_harness.h"
#include "support/fake_services.h"

namespace marigold::index_test {

using run_test::ScriptedProxy;

class IndexServices : public test::FakeServices {
 public:
  explicit IndexServices(std::string indexFolder) : index(std::move(indexFolder)) {}
  void Bind(EngineContext& context) override { index.Bind(context); }
  bool ExactSyncFileExists(RunState&, int which) override { return index.ExactSyncFileExists(which == 1); }
  bool ItWasExixting(RunState&, const std::string& path, int where) override { return index.ItWasExixting(path, where); }
  bool WriteExactSyncIndex(RunState&, const PlistDict& taskRecord, int mode) override {
    return index.WriteExactSyncIndex(mode, taskRecord);
  }
  ExactSyncIndex index;
};

// A proxy that also keeps the conflict codes it was asked about and the console's comments.
class RecordingProxy : public ScriptedProxy {
 public:
  int AskReplace(const ReplaceRequest& request) override {
    conflicts.push_back(request.conflict);
    return ScriptedProxy::AskReplace(request);
  }
  void SetTaskComment(const std::string& text) override { comments.push_back(text); }
  void ShowIndeterminateProgress() override { ++indeterminate; }
  std::vector<int> conflicts;
  std::vector<std::string> comments;
  int indeterminate = 0;
};

enum Task { kExactSync, kSync, kExactBackup, kBackup };

class IndexHarness {
 public:
  IndexHarness();
  std::string A(const std::string& relative = {}) const { return Under(mSource, relative); }
  std::string B(const std::string& relative = {}) const { return Under(mDest, relative); }
  std::string IndexFolder() const { return temp.Join("support/ExactSync Indexes"); }
  std::string MainIndex() const { return IndexFolder() + "/MG3ExactSyncMainIndex.plist"; }
  std::string PairIndex(const std::string& name = "MG3ExactSyncIndex.plist") const { return IndexFolder() + "/" + name; }

  // The session's folders (created when missing), task and exact-sync conflict rules.
  void SetFolders(const std::string& source, const std::string& dest);
  void SetTask(Task task);
  void SetExactSyncRules(int radio, int ask);
  void SetSessionKey(const std::string& sub, const std::string& key, PlistValue value);

  // Runs the session with a fresh ExactSyncIndex, as a new program would have.
  RunDriver& Run(int executedBy = kExecutedByUser, FileSystem* fs = nullptr);
  RunState& state() { return mDriver->state(); }
  const PlistDict& Task0() const;

  TempFolder temp;
  LinuxFileSystem realFs;
  RecordingProxy proxy;
  std::unique_ptr<IndexServices> services;
  PlistDict preferences;
  PlistDict document;

 private:
  static std::string Under(const std::string& root, const std::string& relative) {
    return relative.empty() ? root : root + "/" + relative;
  }
  std::string mSource, mDest;
  std::unique_ptr<RunDriver> mDriver;
};

// An index bound to a context of its own, for calling its operations one at a time; the run's
// state says an exact synchronisation of `source` and `dest`.
struct IndexContext {
  IndexContext(const std::string& indexFolder, const std::string& source, const std::string& dest);
  LinuxFileSystem fs;
  RecordingProxy proxy;
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
