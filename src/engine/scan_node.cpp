#include "engine/scan_node.h"

namespace marigold {

std::string ChildPath(const std::string& folder, const std::string& name) {
  if (folder.empty()) return name;
  if (folder.back() == '/') return folder + name;
  std::string path;
  path.reserve(folder.size() + 1 + name.size());
  path.append(folder).push_back('/');
  path.append(name);
  return path;
}

}  // namespace marigold
