// Names and paths as the exact-sync index files keep them. A property list holds UTF-8 text, but
// a name on disk is any bytes but "/" and NUL. A name or path that is not plain text (invalid
// UTF-8, or control characters that XML cannot carry) is stored escaped, and every stored form
// maps back to exactly one original:
//   - an escaped name begins with "/", which no real name can hold;
//   - an escaped path begins with "%", which no absolute path can (relative paths are always
//     escaped, so they cannot be mistaken for one);
//   - after that mark, "%" and every byte that is not plain text are written as "%XX".
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace marigold {

// Valid UTF-8 without C0 control characters: text an XML property list carries unchanged.
bool IsPlainIndexText(std::string_view bytes);

std::string EscapeIndexName(std::string_view name);
// The name's bytes; a stored form that is not escaped, or whose escapes are damaged, is taken
// as it is.
std::string UnescapeIndexName(std::string_view stored);
std::string EscapeIndexPath(std::string_view path);
std::string UnescapeIndexPath(std::string_view stored);

// The number of path components, an absolute path's first being "/" ("/a//b/" has 3).
std::size_t CountPathComponents(std::string_view path);

// The components of `path` in order, as views into it ("/a//b/" gives "/", "a", "b").
std::vector<std::string_view> SplitPathComponents(std::string_view path);

}  // namespace marigold
