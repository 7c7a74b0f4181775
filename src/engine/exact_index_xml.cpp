#include "engine/exact_index_xml.h"

#include <charconv>
#include <cstdint>

namespace marigold {
namespace {

bool IsSpace(char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r'; }

bool IsNameChar(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_' || c == '-' ||
         c == ':' || c == '.';
}

void AppendUtf8(std::string& out, std::uint32_t code) {
  if (code < 0x80) {
    out += static_cast<char>(code);
  } else if (code < 0x800) {
    out += static_cast<char>(0xC0 | (code >> 6));
    out += static_cast<char>(0x80 | (code & 0x3F));
  } else if (code < 0x10000) {
    out += static_cast<char>(0xE0 | (code >> 12));
    out += static_cast<char>(0x80 | ((code >> 6) & 0x3F));
    out += static_cast<char>(0x80 | (code & 0x3F));
  } else {
    out += static_cast<char>(0xF0 | (code >> 18));
    out += static_cast<char>(0x80 | ((code >> 12) & 0x3F));
    out += static_cast<char>(0x80 | ((code >> 6) & 0x3F));
    out += static_cast<char>(0x80 | (code & 0x3F));
  }
}

}  // namespace

void IndexXmlCursor::SkipSpace() {
  while (mPos < mText.size() && IsSpace(mText[mPos])) ++mPos;
}

bool IndexXmlCursor::SkipMarkup() {
  const std::string_view rest = mText.substr(mPos);
  std::string_view close;
  if (rest.starts_with("<!--")) {
    close = "-->";
  } else if (rest.starts_with("<?")) {
    close = "?>";
  } else if (rest.starts_with("<!DOCTYPE")) {
    close = ">";
    // An internal subset could define entities this reader does not know.
    const std::size_t end = rest.find('>');
    if (end == std::string_view::npos || rest.substr(0, end).find('[') != std::string_view::npos) return false;
  } else {
    return false;
  }
  const std::size_t end = rest.find(close, 2);
  if (end == std::string_view::npos) return false;
  mPos += end + close.size();
  return true;
}

bool IndexXmlCursor::ParseTag(Tag& tag) {
  // At "<" of an element tag.
  ++mPos;
  tag.closing = mPos < mText.size() && mText[mPos] == '/';
  if (tag.closing) ++mPos;
  const std::size_t nameStart = mPos;
  while (mPos < mText.size() && IsNameChar(mText[mPos])) ++mPos;
  if (mPos == nameStart) return false;
  tag.name = mText.substr(nameStart, mPos - nameStart);
  tag.selfClosing = false;
  // Attributes (<plist version="1.0">) are skipped, quoted values included.
  while (mPos < mText.size()) {
    const char c = mText[mPos];
    if (c == '>') {
      ++mPos;
      return true;
    }
    if (c == '/' && mPos + 1 < mText.size() && mText[mPos + 1] == '>' && !tag.closing) {
      tag.selfClosing = true;
      mPos += 2;
      return true;
    }
    if (c == '"' || c == '\'') {
      const std::size_t end = mText.find(c, mPos + 1);
      if (end == std::string_view::npos) return false;
      mPos = end + 1;
      continue;
    }
    if (c == '<') return false;
    ++mPos;
  }
  return false;
}

bool IndexXmlCursor::NextTag(Tag& tag) {
  for (;;) {
    SkipSpace();
    if (mPos >= mText.size() || mText[mPos] != '<') return false;
    if (mPos + 1 < mText.size() && (mText[mPos + 1] == '!' || mText[mPos + 1] == '?')) {
      if (!SkipMarkup()) return false;
      continue;
    }
    return ParseTag(tag);
  }
}

bool IndexXmlCursor::AppendEntity(std::string& out) {
  // At "&".
  const std::size_t end = mText.find(';', mPos);
  if (end == std::string_view::npos || end - mPos > 12) return false;
  const std::string_view name = mText.substr(mPos + 1, end - mPos - 1);
  mPos = end + 1;
  if (name == "amp") return out += '&', true;
  if (name == "lt") return out += '<', true;
  if (name == "gt") return out += '>', true;
  if (name == "quot") return out += '"', true;
  if (name == "apos") return out += '\'', true;
  if (name.size() < 2 || name[0] != '#') return false;
  const bool hex = name[1] == 'x';
  const std::string_view digits = name.substr(hex ? 2 : 1);
  std::uint32_t code = 0;
  const auto [ptr, ec] = std::from_chars(digits.data(), digits.data() + digits.size(), code, hex ? 16 : 10);
  if (ec != std::errc() || ptr != digits.data() + digits.size() || digits.empty()) return false;
  if (code == 0 || code > 0x10FFFF || (code >= 0xD800 && code <= 0xDFFF)) return false;
  AppendUtf8(out, code);
  return true;
}

bool IndexXmlCursor::ReadElementText(const Tag& open, std::string& out) {
  out.clear();
  if (open.selfClosing) return true;
  for (;;) {
    const std::size_t stop = mText.find_first_of("<&", mPos);
    if (stop == std::string_view::npos) return false;
    out.append(mText.substr(mPos, stop - mPos));
    mPos = stop;
    if (mText[mPos] == '&') {
      if (!AppendEntity(out)) return false;
      continue;
    }
    const std::string_view rest = mText.substr(mPos);
    if (rest.starts_with("<![CDATA[")) {
      const std::size_t end = rest.find("]]>");
      if (end == std::string_view::npos) return false;
      out.append(rest.substr(9, end - 9));
      mPos += end + 3;
      continue;
    }
    if (rest.starts_with("<!--")) {
      if (!SkipMarkup()) return false;
      continue;
    }
    Tag close;
    if (!ParseTag(close)) return false;
    return close.closing && close.name == open.name;
  }
}

bool IndexXmlCursor::SkipValue(const Tag& open) {
  if (open.selfClosing) return true;
  if (open.name != "dict" && open.name != "array") {
    std::string ignored;
    return ReadElementText(open, ignored);
  }
  int depth = 1;
  while (depth > 0) {
    const std::size_t lt = mText.find('<', mPos);
    if (lt == std::string_view::npos) return false;
    mPos = lt;
    const std::string_view rest = mText.substr(mPos);
    if (rest.starts_with("<![CDATA[")) {
      const std::size_t end = rest.find("]]>");
      if (end == std::string_view::npos) return false;
      mPos += end + 3;
      continue;
    }
    if (rest.starts_with("<!") || rest.starts_with("<?")) {
      if (!SkipMarkup()) return false;
      continue;
    }
    Tag tag;
    if (!ParseTag(tag)) return false;
    if (tag.selfClosing || (tag.name != "dict" && tag.name != "array")) continue;
    depth += tag.closing ? -1 : 1;
  }
  return true;
}

bool IndexXmlCursor::AtEnd() {
  for (;;) {
    SkipSpace();
    if (mPos >= mText.size()) return true;
    if (mText[mPos] != '<' || mPos + 1 >= mText.size() || (mText[mPos + 1] != '!' && mText[mPos + 1] != '?')) {
      return false;
    }
    if (!SkipMarkup()) return false;
  }
}

}  // namespace marigold
