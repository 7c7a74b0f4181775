// The questions that document and application commands ask a person. The desktop program shows
// them as alerts and panels, the terminal asks or takes the default, tests script the answers.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace marigold {

struct AlertRequest {
  enum class Style { Warning, Critical, Informational };
  Style style = Style::Warning;
  std::string title;        // "Warning:"
  std::string text;         // the message
  std::string informative;  // the smaller second text, may be empty
  std::vector<std::string> buttons;  // first is the default; never empty
};

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

// Builds the one-button alert titled "Warning:" that errors outside a run use.
AlertRequest WarningAlert(const std::string& text);

}  // namespace marigold
