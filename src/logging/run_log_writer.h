// The run log as the run's log role: after the copy it composes the log, saves it in the log
// folder and prunes old logs as the preferences say. A save that fails goes through the run's
// error path and is noted at the end of the log text. Mailing is left to the run controller,
// which holds the outcome. Runs on the run's worker thread.
#pragma once

#include <optional>
#include <string>

#include "engine/engine_context.h"
#include "engine/run_services.h"
#include "logging/run_log_text.h"

namespace marigold {

class RunLogWriter : public RunLog {
 public:
  // `fallbackLogFolder` is used when the preferences' log folder cannot be made.
  explicit RunLogWriter(std::string fallbackLogFolder = "");

  void Bind(EngineContext& context) override { mContext = &context; }
  // Before each run: the document it runs and whether it runs "All Sessions". `document` must
  // outlive the run.
  void PrepareRun(const PlistDict& document, bool allSessions);
  // Who and where; read from the system at the first log unless given.
  void SetHostInfo(const LogHostInfo& host) { mHost = host; }
  // The locale dates are shown in ("" for the user's); the zone is the run clock's.
  void SetLocaleName(std::string localeName) { mLocaleName = std::move(localeName); }

  void MakeLog(RunState& state) override;

  // The last run's log text ("\r" line ends) and saved file ("" when none was written).
  const std::string& logString() const { return mLogString; }
  const std::string& pathLogFile() const { return mPathLogFile; }
  // The log folder the last run used when it had to fall back to the default one, else "".
  const std::string& changedLogFolder() const { return mChangedLogFolder; }

 private:
  std::string mFallbackLogFolder;
  EngineContext* mContext = nullptr;
  const PlistDict* mDocument = nullptr;
  bool mAllSessions = false;
  std::optional<LogHostInfo> mHost;
  std::string mLocaleName;
  std::string mLogString;
  std::string mPathLogFile;
  std::string mChangedLogFolder;
};

// Reads who runs the program and on what system: os-release, the kernel, the default route's
// hardware address, the login and full names, real and effective ids.
LogHostInfo ReadLogHostInfo();

}  // namespace marigold
