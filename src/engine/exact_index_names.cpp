#include "engine/exact_index_names.h"

#include <glib.h>

namespace marigold {
namespace {

constexpr char kHex[] = "0123456789ABCDEF";

bool NeedsEscape(unsigned char byte) { return byte < 0x20 || byte == '%'; }

// `mark` followed by the bytes, "%" and control characters written as "%XX", and the bytes of
// invalid UTF-8 sequences too.
std::string Escape(std::string_view bytes, char mark) {
  std::string out(1, mark);
  out.reserve(bytes.size() + 8);
  const char* pos = bytes.data();
  const char* end = bytes.data() + bytes.size();
  while (pos < end) {
    const char* validEnd = nullptr;
    g_utf8_validate_len(pos, static_cast<gsize>(end - pos), &validEnd);
    for (const char* p = pos; p < validEnd; ++p) {
      const auto byte = static_cast<unsigned char>(*p);
      if (NeedsEscape(byte)) {
        out += '%';
        out += kHex[byte >> 4];
        out += kHex[byte & 15];
      } else {
        out += *p;
      }
    }
    if (validEnd < end) {
      const auto byte = static_cast<unsigned char>(*validEnd);
      out += '%';
      out += kHex[byte >> 4];
      out += kHex[byte & 15];
      ++validEnd;
    }
    pos = validEnd;
  }
  return out;
}

int HexValue(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  return -1;
}

std::string Unescape(std::string_view escaped) {
  std::string out;
  out.reserve(escaped.size());
  for (std::size_t i = 0; i < escaped.size(); ++i) {
    if (escaped[i] == '%' && i + 2 < escaped.size()) {
      const int high = HexValue(escaped[i + 1]);
      const int low = HexValue(escaped[i + 2]);
      if (high >= 0 && low >= 0) {
        out += static_cast<char>(high * 16 + low);
        i += 2;
        continue;
      }
    }
    out += escaped[i];
  }
  return out;
}

}  // namespace

bool IsPlainIndexText(std::string_view bytes) {
  for (char c : bytes) {
    if (static_cast<unsigned char>(c) < 0x20) return false;
  }
  return g_utf8_validate_len(bytes.data(), static_cast<gsize>(bytes.size()), nullptr);
}

std::string EscapeIndexName(std::string_view name) {
  return IsPlainIndexText(name) ? std::string(name) : Escape(name, '/');
}

std::string UnescapeIndexName(std::string_view stored) {
  if (stored.size() < 2 || stored.front() != '/') return std::string(stored);
  return Unescape(stored.substr(1));
}

std::string EscapeIndexPath(std::string_view path) {
  return !path.empty() && path.front() == '/' && IsPlainIndexText(path) ? std::string(path) : Escape(path, '%');
}

std::string UnescapeIndexPath(std::string_view stored) {
  if (stored.empty() || stored.front() != '%') return std::string(stored);
  return Unescape(stored.substr(1));
}

std::size_t CountPathComponents(std::string_view path) {
  std::size_t count = !path.empty() && path.front() == '/' ? 1 : 0;
  bool inComponent = false;
  for (char c : path) {
    if (c == '/') {
      inComponent = false;
    } else if (!inComponent) {
      inComponent = true;
      ++count;
    }
  }
  return count;
}

std::vector<std::string_view> SplitPathComponents(std::string_view path) {
  std::vector<std::string_view> components;
  std::size_t pos = 0;
  if (!path.empty() && path.front() == '/') {
    components.emplace_back("/");
    pos = 1;
  }
  while (pos < path.size()) {
    std::size_t slash = path.find('/', pos);
    if (slash == std::string_view::npos) slash = path.size();
    if (slash > pos) components.push_back(path.substr(pos, slash - pos));
    pos = slash + 1;
  }
  return components;
}

}  // namespace marigold
