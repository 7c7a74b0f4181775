#include "engine/copy_mode.h"

namespace marigold {

std::string_view CopyModeWords(int mode) {
  if (mode < 0) return "switched off";
  switch (mode) {
    case kCopyModeNothing: return "nothing to do";
    case kCopyModeCopyAToB: return "copy A to B";
    case kCopyModeCopyBToA: return "copy B to A";
    case kCopyModeReplaceAToB: return "replace B with A";
    case kCopyModeReplaceBToA: return "replace A with B";
    case kCopyModeDeleteInA: return "delete in A";
    case kCopyModeDeleteInB: return "delete in B";
    case kCopyModeMetadataAToB: return "attributes A to B";
    case kCopyModeMetadataBToA: return "attributes B to A";
    default: return "skip";
  }
}

std::string_view PreviewIconName(int mode, bool moveToTrash) {
  switch (mode < 0 ? -mode : mode) {
    case kCopyModeNothing: return "icnPreviewNothing";
    case kCopyModeCopyAToB:
    case kCopyModeCopyBToA: return "icnPreviewViolet";
    case kCopyModeReplaceAToB:
    case kCopyModeReplaceBToA: return "icnPreviewOrange";
    case kCopyModeDeleteInA:
    case kCopyModeDeleteInB: return moveToTrash ? "icnPreviewTrash" : "icnPreviewDelete";
    case kCopyModeMetadataAToB: return "icnPreviewAccessAB.png";
    case kCopyModeMetadataBToA: return "icnPreviewAccessBA.png";
    default: return "icnPreviewSkip";
  }
}

}  // namespace marigold
