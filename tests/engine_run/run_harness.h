// Whole runs on real temporary trees: a proxy that answers from a script and records what a
// person would have seen, run services that record the phases they are called in, and
// documents built from a few words per session.
#pragma once

#include <algorithm>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "engine/run_driver.h"
#include "platform/linux_file_system.h"
#include "support/temp_folder.h"
#include "support/tree_values.h"

namespace marigold::run_test {

class ScriptedProxy : public AppkitProxy {
 public:
  int Alert(const AlertRequest& request) override {
    std::lock_guard<std::mutex> lock(mMutex);
    alerts.push_back(request);
    return Next(alertAnswers, 0);
  }
  int AskReplace(const ReplaceRequest& request) override {
    std::lock_guard<std::mutex> lock(mMutex);
    asked.push_back(request);
    return Next(replaceAnswers, kReplaceResultSkip);
  }
  bool ShowPreview(PreviewEditor&) override {
    ++previews;
    return previewAnswer;
  }
  void RunStarted() override { Note("started"); }
  void RunEnded() override { Note("ended"); }
  void ShowMainFolders(const std::string& source, const std::string& dest) override {
    Note("folders " + source + " " + dest);
  }
  // Called from the items-to-do refresher's thread too.
  void UpdateItemsToDo(std::int64_t itemsToDo, std::int64_t itemsTotal) override {
    std::lock_guard<std::mutex> lock(mMutex);
    mItemsToDo.emplace_back(itemsToDo, itemsTotal);
  }
  void Beep() override { Note("beep"); }

  std::vector<std::string> Events() const {
    std::lock_guard<std::mutex> lock(mMutex);
    return mEvents;
  }
  std::vector<std::pair<std::int64_t, std::int64_t>> ItemsToDo() const {
    std::lock_guard<std::mutex> lock(mMutex);
    return mItemsToDo;
  }

  // Answers, used in order; an empty queue answers the first button / Skip.
  std::deque<int> alertAnswers;
  std::deque<int> replaceAnswers;
  bool previewAnswer = true;
  std::vector<AlertRequest> alerts;
  std::vector<ReplaceRequest> asked;
  int previews = 0;

 private:
  static int Next(std::deque<int>& answers, int fallback) {
    if (answers.empty()) return fallback;
    const int answer = answers.front();
    answers.pop_front();
    return answer;
  }
  void Note(std::string event) {
    std::lock_guard<std::mutex> lock(mMutex);
    mEvents.push_back(std::move(event));
  }
  mutable std::mutex mMutex;
  std::vector<std::string> mEvents;
  std::vector<std::pair<std::int64_t, std::int64_t>> mItemsToDo;
};

// Records each call as "<what> s<session>" in `calls`.
class RecordingServices : public RunServices {
 public:
  bool FoldersAreValid(RunState& state, const std::string& source, const std::string&, int) override {
    Record("validate", state);
    return std::find(invalidSources.begin(), invalidSources.end(), source) == invalidSources.end();
  }
  int CheckPrivilegesOnFiles(RunState&, const std::string& source, const std::string&, int) override {
    auto found = privilegeProblems.find(source);
    return found == privilegeProblems.end() ? 0 : found->second;
  }
  bool WriteExactSyncIndex(RunState&, const PlistDict& taskRecord, int) override {
    indexRecords.push_back(taskRecord);
    return true;
  }
  std::optional<std::string> GetDestSubFolderName(RunState&, const std::string&) override { return subFolderName; }
  PlistArray ExecutiveMultiArray(RunState& state, const PlistDict& session) override;
  bool MountAllVolumesForSession(RunState& state, const PlistDict&) override {
    Record("mount", state);
    return true;
  }
  void UnmountAllVolumesForSession(RunState& state, const PlistDict&) override { Record("unmount", state); }
  void ExecuteAppleScript(RunState& state, const PlistDict&, int which) override {
    Record(which == 1 ? "before" : "after", state);
    if (onScript) onScript(state.sessionIndex, which);
  }
  void MakeLog(RunState&) override { calls.push_back("log"); }

  std::vector<std::string> calls;
  std::vector<std::string> invalidSources;       // FoldersAreValid refuses these sources
  std::map<std::string, int> privilegeProblems;  // CheckPrivilegesOnFiles by source
  std::optional<std::string> subFolderName;
  std::map<std::int64_t, std::vector<std::pair<std::string, std::string>>> multiRows;  // by session
  std::function<void(std::int64_t session, int which)> onScript;
  std::vector<PlistDict> indexRecords;  // the task records WriteExactSyncIndex received

 private:
  void Record(const char* what, const RunState& state) {
    calls.push_back(std::string(what) + " s" + std::to_string(state.sessionIndex));
  }
};

struct SessionPlan {
  std::string source;
  std::string dest;
  int task = 1;  // 1 synchronise, 2 back up
  bool exact = false;
  bool multi = false;
  bool createDestFolder = false;
};

// A document whose sessions are `sessions`, every other key at its default.
PlistDict MakeDocument(const std::vector<SessionPlan>& sessions);

// A temporary folder with side A and side B roots, the default preferences (a detailed log,
// errors asked about), and a driver made for each run.
class RunHarness {
 public:
  RunHarness();
  std::string A(const std::string& relative = {}) const { return temp.Join(relative.empty() ? "A" : "A/" + relative); }
  std::string B(const std::string& relative = {}) const { return temp.Join(relative.empty() ? "B" : "B/" + relative); }
  std::string Path(const std::string& relative) const { return temp.Join(relative); }

  // Runs `sessionIndex` of `document` on this thread; `fs` defaults to the real file system.
  RunDriver& Run(std::int64_t sessionIndex = 0, int executedBy = kExecutedByUser, FileSystem* fs = nullptr);
  RunDriver& driver() { return *mDriver; }

  // The records of the last run.
  const PlistArray& Sessions() const { return mDriver->state().logSessionArray; }
  const PlistDict& Task(std::size_t session, std::size_t task) const {
    return *Sessions().at(session).AsDict()->GetArray("logTaskArray")->at(task).AsDict();
  }

  TempFolder temp;
  LinuxFileSystem realFs;
  ScriptedProxy proxy;
  RecordingServices services;
  PlistDict preferences;
  PlistDict document;

 private:
  std::unique_ptr<RunDriver> mDriver;
};

}  // namespace marigold::run_test
