#include "engine/privilege_messages.h"

#include "util/strings_table.h"

namespace marigold {

std::string PrivilegeProblemText(int result, const std::string& item, const std::string& reason) {
  std::string text;
  if (result == 1) {
    text = GLS("Insufficient Privileges") + " \"" + item + "\"\r" + GLS("Try to log in as root or mark the check-box") +
           " \"" + GLS(kRunAsRootTitle) + "\" " + GLS("in the MG Preferences panel");
  } else {
    text = GLS("Item Locked") + " \"" + item + "\"\r" +
           GLS("Try to unmark the check-box \"Locked\" in the Finder \"Get Info\" panel or to mark the check-box") +
           " \"" + GLS(kSkipLockedItemsTitle) + "\" " + GLS("in the MG Settings panel");
  }
  if (!reason.empty()) text += "\r" + reason;
  return text;
}

}  // namespace marigold
