// The run: sessions and tasks scanned into trees, previewed, copied, then the index, the backup
// dates and the log. ExecuteSyncBackup runs on the worker thread; everything a person sees goes
// through the proxy.
#pragma once

#include <cstdint>

#include "engine/copy_executor.h"
#include "engine/engine_context.h"
#include "engine/error_path.h"
#include "engine/scanner.h"

namespace marigold {

class RunDriver {
 public:
  // `document` is the session document; `preferences` the preferences dictionary (a run may use
  // a copy with overrides).
  RunDriver(PlistDict& document, const PlistDict& preferences, FileSystem& fs, AppkitProxy& proxy,
            RunServices& services);

  // The whole run for the session at `sessionIndex` (or "All Sessions"), started by `executedBy`.
  // Returns when the run has concluded.
  void ExecuteSyncBackup(std::int64_t sessionIndex, int executedBy);
  // Asks a running run to stop (any thread).
  void Stop();

  RunState& state() { return mState; }

 private:
  PlistDict& mDocument;
  const PlistDict& mPreferences;
  RunState mState;
  ErrorPath mErrors;
  EngineContext mContext;
  Scanner mScanner;
  CopyExecutor mExecutor;
};

}  // namespace marigold
