// What a real run uses for the session options: the folder checks and unlocking, the filters and
// exclusions, the exact-sync index, the dated sub-folder and the multiple list. Front ends build
// one per run and hand it to the RunDriver; tests of the engine alone use the defaults instead.
#pragma once

#include <memory>
#include <string>

#include "engine/run_services.h"

namespace marigold {

class SessionRunServices : public RunServices {
 public:
  // `exactIndexFolder` is where the exact-sync index lives (the support folder's
  // "ExactSync Indexes").
  explicit SessionRunServices(std::string exactIndexFolder);
  ~SessionRunServices() override;

  void Bind(EngineContext& context) override;
  void SessionStarts(RunState& state, const PlistDict& session) override;

  std::optional<std::string> GetDestSubFolderName(RunState& state, const std::string& source) override;

 private:
  std::string mExactIndexFolder;
  EngineContext* mContext = nullptr;
};

}  // namespace marigold
