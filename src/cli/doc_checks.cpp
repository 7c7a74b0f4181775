#include "cli/doc_checks.h"

namespace marigold {

const std::vector<SessionCheck>& DocSessionChecks() {
  // Add an option panel's validation here (a filter row, a row of the multiple list, ...): a
  // function that returns the panel's message when the edited session breaks one of its rules.
  // `doc set` refuses the whole edit on the first message and leaves the file as it was.
  static const std::vector<SessionCheck> checks{};
  return checks;
}

}  // namespace marigold
