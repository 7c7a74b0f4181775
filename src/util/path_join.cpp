#include "util/path_join.h"

namespace marigold {

std::string JoinPath(const std::string& folder, const std::string& name) {
  if (folder.empty()) return name;
  if (name.empty()) return folder;
  std::size_t end = folder.find_last_not_of('/');
  std::string head = end == std::string::npos ? std::string() : folder.substr(0, end + 1);
  std::size_t start = name.find_first_not_of('/');
  std::string tail = start == std::string::npos ? std::string() : name.substr(start);
  return head + "/" + tail;
}

}  // namespace marigold
