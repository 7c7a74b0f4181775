// A modal alert as the program's rules compose it; every front end shows it its own way (a dialog,
// a terminal question, a scripted answer in tests) and returns the index of the button pressed.
#pragma once

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

// Builds the one-button alert titled "Warning:" that errors outside a run use.
AlertRequest WarningAlert(const std::string& text);

}  // namespace marigold
