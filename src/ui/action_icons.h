// The pictures the library names ("icnPreviewViolet", "icnReplaceOrange", ...), drawn in code so
// that they follow the screen's scale and need no image files.
#pragma once

#include <QIcon>
#include <string_view>

namespace marigold {

// `towardsA`: the action runs from side B to side A (the arrow points left).
QIcon ActionIcon(std::string_view imageName, bool towardsA);
// The preview's picture for a copy mode (switched-off modes drawn faded).
QIcon CopyModeIcon(int copyMode);

}  // namespace marigold
