// The questions that document and application commands ask a person. The desktop program shows
// them as alerts and panels, the terminal asks or takes the default, tests script the answers.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "util/alert_request.h"

namespace marigold {

class AppPrompts {
 public:
  virtual ~AppPrompts() = default;
  // Shows the alert and returns the index of the button pressed (0 = first).
  virtual int Alert(const AlertRequest& request) = 0;
  // A save panel restricted to `extension`; the chosen path, or nothing when cancelled.
  virtual std::optional<std::string> SavePanel(const std::string& suggestedName,
                                               const std::string& extension) = 0;
  // An open panel for one file of `extension`; the chosen path, or nothing when cancelled.
  virtual std::optional<std::string> OpenPanel(const std::string& extension) = 0;
};

}  // namespace marigold
