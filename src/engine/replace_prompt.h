// The words of the replace prompt for each conflict kind: the window title, the explanation, the
// buttons' titles and tooltips, the direction picture, and which sides can be shown. Any front
// end (the desktop window, the terminal) builds its prompt from this.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "engine/appkit_proxy.h"

namespace marigold {

struct ReplacePromptText {
  std::string title;  // "Replace File", "Delete File", "Replace folder"
  std::string text;   // the explanation, lines separated by "\r"
  std::string replaceTitle;
  std::string replaceTooltip;
  std::string skipTitle;
  std::string skipTooltip;
  std::string directionImage;
  std::string directionTooltip;
  bool showsDirectionButton = false;  // kinds 31, 51 and 52 show it enabled
  bool canChangeDirection = false;    // only kind 31 acts on it; elsewhere it does nothing
  bool showsSource = true;          // the source side can be opened and revealed
  bool showsDest = true;
};

// The prompt for `request`. `directionChanged`: the user pressed the direction button an odd
// number of times, which flips the picture and the tooltips of kind 31.
ReplacePromptText BuildReplacePrompt(const ReplaceRequest& request, bool directionChanged);

// A date as the prompt shows it ("EEEE, MMMM dd, yyyy - HH:mm:ss" in the user's locale).
std::string PromptDateText(std::int64_t unixSeconds);
// "Modification Date: " and the date, or "--" for a missing item.
std::string ModificationDateLine(std::optional<std::int64_t> unixSeconds);

}  // namespace marigold
