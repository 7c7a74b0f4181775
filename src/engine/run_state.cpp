#include "engine/run_state.h"

#include "engine/copy_mode.h"

namespace marigold {

void RunTallies::Count(int mode, std::int64_t delta) {
  switch (mode) {
    case kCopyModeNothing: runNothing += delta; break;
    case kCopyModeCopyAToB:
    case kCopyModeReplaceAToB: runToCopyAToB += delta; break;
    case kCopyModeCopyBToA:
    case kCopyModeReplaceBToA: runToCopyBToA += delta; break;
    case kCopyModeDeleteInA:
    case kCopyModeDeleteInB: runToDelete += delta; break;
    case kCopyModeMetadataAToB: runMetadataAToB += delta; break;
    case kCopyModeMetadataBToA: runMetadataBToA += delta; break;
    default: break;
  }
}

void RunTallies::Reset() {
  runItemsToDo = 0;
  runItemsTotal = runToCopyAToB = runToCopyBToA = runToDelete = 0;
  runMetadataAToB = runMetadataBToA = runNothing = runSwitchedOff = 0;
}

}  // namespace marigold
