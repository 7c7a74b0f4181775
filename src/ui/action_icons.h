// The pictures the library names ("icnPreviewViolet", "icnReplaceOrange", ...), drawn in code so
// that they follow the screen's scale and need no image files.
#pragma once

#include <QIcon>
#include <string_view>

namespace marigold {

// `towardsA`: the action runs from side B to side A (the arrow points left).
QIcon ActionIcon(std::string_view imageName, bool towardsA);
// The preview's picture `imageName` of a copy mode, pointing the mode's way (switched-off modes
// drawn faded).
QIcon CopyModeIcon(int copyMode, std::string_view imageName);
// The console's timer button ("icnOptOn_Timer_1" when the selection's timers are on, "_0" off).
QIcon TimerIcon(bool on);

}  // namespace marigold
