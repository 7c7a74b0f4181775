// The hardware (MAC) address the run log names: that of the interface the default route leaves
// through.
#pragma once

#include <string>

namespace marigold {

// "aa:bb:cc:dd:ee:ff" of the default route's interface, read from `procRoute` (the kernel's
// routing table) and `sysNet` (/sys/class/net); "" when there is no default route or it cannot
// be read. Any thread.
std::string DefaultRouteHardwareAddress(const std::string& procRoute = "/proc/net/route",
                                        const std::string& sysNet = "/sys/class/net");

}  // namespace marigold
