#include "engine/session_run_services.h"

#include "engine/engine_context.h"
#include "options/sub_folder_name.h"

namespace marigold {

SessionRunServices::SessionRunServices(std::string exactIndexFolder) : mExactIndexFolder(std::move(exactIndexFolder)) {}

SessionRunServices::~SessionRunServices() = default;

void SessionRunServices::Bind(EngineContext& context) { mContext = &context; }

void SessionRunServices::SessionStarts(RunState&, const PlistDict&) {}

std::optional<std::string> SessionRunServices::GetDestSubFolderName(RunState& state, const std::string& source) {
  return DestSubFolderNameForTask(state, source);
}

}  // namespace marigold
