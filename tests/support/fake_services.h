// Every role of a run in one object, each answering "nothing to do" until a test overrides it, so a
// fake states only what it steers and still hands itself to the engine as its RunServices.
#pragma once

#include "engine/run_services.h"

namespace marigold::test {

class FakeServices : public RunServices,
                     public FolderChecks,
                     public ItemFilter,
                     public ExactIndexStore,
                     public TaskPlanner,
                     public SessionHooks,
                     public RunLog {
 public:
  FakeServices() {
    folders = this;
    filter = this;
    index = this;
    tasks = this;
    hooks = this;
    log = this;
  }
  FakeServices(const FakeServices&) = delete;
  FakeServices& operator=(const FakeServices&) = delete;
};

}  // namespace marigold::test
