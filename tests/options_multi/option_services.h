// Run services that answer from the session's own filters, exclusions and multiple list, as the
// program's services do, and record the rest like the run tests' services.
#pragma once

#include "../engine_run/run_harness.h"
#include "options/filters.h"
#include "options/multi_list.h"

namespace marigold::run_test {

class OptionServices : public RecordingServices {
 public:
  void SessionStarts(RunState&, const PlistDict& session) override { filters.SessionStarts(session); }
  bool IsToBeExcluded(RunState&, const std::string& path) override { return filters.IsToBeExcluded(path); }
  bool IsToBeFiltered(RunState&, const std::string& path, const ItemAttributes& attributes) override {
    return filters.IsToBeFiltered(path, attributes);
  }
  PlistArray ExecutiveMultiArray(RunState&, const PlistDict& session) override {
    return marigold::ExecutiveMultiArray(session);
  }

  SessionFilters filters;
};

// Runs session 0 of the harness's document with `services` instead of the harness's own.
inline RunDriver& RunWith(RunHarness& h, OptionServices& services, std::unique_ptr<RunDriver>& driver) {
  driver = std::make_unique<RunDriver>(h.document, h.preferences, h.realFs, h.proxy, services);
  driver->ExecuteSyncBackup(0, kExecutedByUser);
  return *driver;
}

}  // namespace marigold::run_test
