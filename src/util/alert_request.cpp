#include "util/alert_request.h"

#include "util/strings_table.h"

namespace marigold {

AlertRequest WarningAlert(const std::string& text) {
  AlertRequest request;
  request.style = AlertRequest::Style::Warning;
  request.title = GLS("Warning:");
  request.text = text;
  request.buttons = {GLS("OK")};
  return request;
}

}  // namespace marigold
