// The decision for one item: what the copy executor will do with it. Even modes act from or on
// the side A path, odd modes from or on the side B path. A negative mode is an action the user
// switched off in the preview; any value outside 1..9 acts as a skip.
#pragma once

#include <string_view>

namespace marigold {

enum CopyMode : int {
  kCopyModeSkip = 0,
  kCopyModeNothing = 1,
  kCopyModeCopyAToB = 2,
  kCopyModeCopyBToA = 3,
  kCopyModeReplaceAToB = 4,
  kCopyModeReplaceBToA = 5,
  kCopyModeDeleteInA = 6,
  kCopyModeDeleteInB = 7,
  kCopyModeMetadataAToB = 8,
  kCopyModeMetadataBToA = 9,
};

// True for the modes whose action starts from side A (2, 4, 6, 8).
inline bool ActsFromSideA(int mode) { return mode >= 2 && mode <= 9 && mode % 2 == 0; }
// The same action in the other direction (2<->3, 4<->5, ...); 0 and 1 stay as they are.
inline int SwapDirection(int mode) { return mode >= 2 && mode <= 9 ? (mode % 2 == 0 ? mode + 1 : mode - 1) : mode; }

// A few words for a mode, as the dry run prints it ("copy A to B", "skip (switched off)", ...).
std::string_view CopyModeWords(int mode);
// The picture the preview draws for a mode ("icnPreviewViolet", ...); a switched-off mode shows
// the picture of its action. Deletions show "icnPreviewTrash" when items go to the trash.
std::string_view PreviewIconName(int mode, bool moveToTrash);

}  // namespace marigold
