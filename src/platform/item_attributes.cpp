#include "platform/item_attributes.h"

#include <algorithm>

namespace marigold {

std::string_view LastPathComponent(std::string_view path) {
  while (path.size() > 1 && path.back() == '/') path.remove_suffix(1);
  if (path == "/") return path;
  std::size_t slash = path.rfind('/');
  return slash == std::string_view::npos ? path : path.substr(slash + 1);
}

bool IsInvisibleName(std::string_view name) { return !name.empty() && name.front() == '.'; }

bool IsPackageName(std::string_view name) {
  std::size_t dot = name.rfind('.');
  if (dot == std::string_view::npos || dot == 0) return false;
  std::string_view extension = name.substr(dot + 1);
  auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? char(c - 'A' + 'a') : c; };
  return std::any_of(std::begin(kPackageExtensions), std::end(kPackageExtensions),
                     [&](std::string_view known) {
                       return known.size() == extension.size() &&
                              std::equal(known.begin(), known.end(), extension.begin(),
                                         [&](char k, char e) { return k == lower(e); });
                     });
}

ItemSnapshot ItemSnapshot::Of(const ItemAttributes& attributes) {
  return ItemSnapshot{true, attributes.kind, attributes.size, attributes.modificationTime};
}

bool ItemSnapshot::Matches(const ItemSnapshot& now) const {
  if (exists != now.exists) return false;
  if (!exists) return true;
  if (kind != now.kind) return false;
  if (kind == ItemKind::kFolder) return true;
  return size == now.size && modificationTime == now.modificationTime;
}

}  // namespace marigold
