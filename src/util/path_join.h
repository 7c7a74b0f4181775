#pragma once

#include <string>

namespace marigold {

// Joins two path parts with exactly one "/" between them.
std::string JoinPath(const std::string& folder, const std::string& name);

}  // namespace marigold
