// What every part of the engine works with during a run: the run's state, the file system, the
// person (through the proxy), the later options, the error path and the preferences.
#pragma once

#include "engine/appkit_proxy.h"
#include "engine/run_services.h"
#include "engine/run_state.h"
#include "platform/clock.h"
#include "platform/file_system.h"
#include "platform/system_log.h"
#include "util/plist_value.h"

namespace marigold {

class ErrorPath;

struct EngineContext {
  RunState& state;
  FileSystem& fs;
  AppkitProxy& proxy;
  RunServices& services;
  ErrorPath& errors;
  const PlistDict& preferences;
  const Clock& clock = SystemClock();
  SystemLog& systemLog = SyslogSystemLog();
};

// The seams a run uses besides the file system and the proxy; the system's own unless a test or
// a front end gives others.
struct RunSeams {
  const Clock* clock = &SystemClock();
  SystemLog* systemLog = &SyslogSystemLog();
};

}  // namespace marigold
