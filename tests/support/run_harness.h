// Whole runs on real temporary trees, with documents built from a few words per session.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "engine/run_driver.h"
#include "platform/linux_file_system.h"
#include "support/fake_services.h"
#include "support/scripted_proxy.h"
#include "support/temp_folder.h"
#include "support/tree_values.h"

namespace marigold::run_test {

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

  // The errors the last run reported, in order.
  const std::vector<std::string>& Errors() const { return mErrors; }
  // The records of the last run.
  const PlistArray& Sessions() const { return mDriver->state().logSessionArray; }
  const PlistDict& Task(std::size_t session, std::size_t task) const {
    return *Sessions().at(session).AsDict()->GetArray("logTaskArray")->at(task).AsDict();
  }

  TempFolder temp;
  LinuxFileSystem realFs;
  ScriptedProxy proxy;
  FakeServices services;
  PlistDict preferences;
  PlistDict document;

 protected:
  std::unique_ptr<RunDriver> mDriver;

 private:
  std::vector<std::string> mErrors;
};

}  // namespace marigold::run_test
