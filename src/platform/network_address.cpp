#include "platform/network_address.h"

#include <fstream>
#include <sstream>

namespace marigold {

std::string DefaultRouteHardwareAddress(const std::string& procRoute, const std::string& sysNet) {
  std::ifstream routes(procRoute);
  std::string line;
  std::getline(routes, line);  // the column titles
  while (std::getline(routes, line)) {
    std::istringstream fields(line);
    std::string interface, destination;
    if (!(fields >> interface >> destination) || destination != "00000000") continue;
    std::ifstream address(sysNet + "/" + interface + "/address");
    std::string text;
    if (std::getline(address, text) && !text.empty()) return text;
  }
  return "";
}

}  // namespace marigold
