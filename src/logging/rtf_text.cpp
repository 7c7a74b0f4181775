#include "logging/rtf_text.h"

#include <cctype>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <vector>

namespace marigold {
namespace {

// Length of the valid UTF-8 sequence at `i` and its code point; 0 when the byte starts none.
std::size_t DecodeUtf8(std::string_view text, std::size_t i, char32_t& cp) {
  const auto byte = [&](std::size_t k) { return static_cast<unsigned char>(text[k]); };
  const unsigned char b = byte(i);
  std::size_t length = b < 0x80 ? 1 : (b & 0xE0) == 0xC0 ? 2 : (b & 0xF0) == 0xE0 ? 3 : (b & 0xF8) == 0xF0 ? 4 : 0;
  if (length == 0 || i + length > text.size()) return 0;
  cp = length == 1 ? b : length == 2 ? (b & 0x1F) : length == 3 ? (b & 0x0F) : (b & 0x07);
  for (std::size_t k = 1; k < length; ++k) {
    if ((byte(i + k) & 0xC0) != 0x80) return 0;
    cp = (cp << 6) | (byte(i + k) & 0x3F);
  }
  static const char32_t kMinimum[] = {0, 0, 0x80, 0x800, 0x10000};
  if (cp < kMinimum[length] || cp > 0x10FFFF || (cp >= 0xD800 && cp <= 0xDFFF)) return 0;
  return length;
}

void AppendUtf8(std::string& out, char32_t cp) {
  if (cp < 0x80) {
    out += static_cast<char>(cp);
  } else if (cp < 0x800) {
    out += static_cast<char>(0xC0 | (cp >> 6));
    out += static_cast<char>(0x80 | (cp & 0x3F));
  } else if (cp < 0x10000) {
    out += static_cast<char>(0xE0 | (cp >> 12));
    out += static_cast<char>(0x80 | ((cp >> 6) & 0x3F));
    out += static_cast<char>(0x80 | (cp & 0x3F));
  } else {
    out += static_cast<char>(0xF0 | (cp >> 18));
    out += static_cast<char>(0x80 | ((cp >> 12) & 0x3F));
    out += static_cast<char>(0x80 | ((cp >> 6) & 0x3F));
    out += static_cast<char>(0x80 | (cp & 0x3F));
  }
}

void AppendUnit(std::string& out, std::uint16_t unit) {
  out += "\\u" + std::to_string(static_cast<std::int16_t>(unit)) + "\\'3f";
}

void AppendEscaped(std::string& out, std::string_view text) {
  for (std::size_t i = 0; i < text.size();) {
    const char c = text[i];
    if (c == '\r' || c == '\n') {
      // "\r\n" written by hand is still one line break.
      out += "\\par\n";
      i += (c == '\r' && i + 1 < text.size() && text[i + 1] == '\n') ? 2 : 1;
      continue;
    }
    if (c == '\t') {
      // As a character, not \tab: text converters turn \tab into spaces, and the log's columns
      // are tabs a reader may want back.
      out += "\\u9\\'3f";
      ++i;
      continue;
    }
    if (c == '\\' || c == '{' || c == '}') {
      out += '\\';
      out += c;
      ++i;
      continue;
    }
    char32_t cp = 0;
    const std::size_t length = DecodeUtf8(text, i, cp);
    if (length == 0) {
      AppendUnit(out, static_cast<std::uint16_t>(0xDC00 + static_cast<unsigned char>(c)));
      ++i;
      continue;
    }
    if (cp >= 0x20 && cp < 0x7F) {
      out += c;
    } else if (cp < 0x10000) {
      AppendUnit(out, static_cast<std::uint16_t>(cp));
    } else {
      const char32_t v = cp - 0x10000;
      AppendUnit(out, static_cast<std::uint16_t>(0xD800 + (v >> 10)));
      AppendUnit(out, static_cast<std::uint16_t>(0xDC00 + (v & 0x3FF)));
    }
    i += length;
  }
}

// Reads RTF groups into text; hidden destinations are skipped whole.
class RtfReader {
 public:
  explicit RtfReader(std::string_view rtf) : mRtf(rtf) {}

  std::optional<std::string> Read() {
    if (mRtf.substr(0, 5) != "{\\rtf") return std::nullopt;
    std::vector<Group> stack;
    stack.push_back({});
    for (std::size_t i = 0; i < mRtf.size();) {
      const char c = mRtf[i];
      if (c == '{') {
        Group inner = stack.back();
        inner.first = true;
        stack.push_back(inner);
        ++i;
      } else if (c == '}') {
        if (stack.size() <= 1) return std::nullopt;
        stack.pop_back();
        ++i;
      } else if (c == '\\') {
        i = ControlAt(i, stack.back());
      } else {
        if (c != '\r' && c != '\n') Emit(stack.back(), std::string(1, c));
        stack.back().first = false;
        ++i;
      }
    }
    if (stack.size() != 1) return std::nullopt;
    FlushSurrogate();
    return mOut;
  }

 private:
  struct Group {
    bool hidden = false;
    bool first = true;  // nothing read in the group yet: a "\*" or table word here hides it
    int skipAfterUnicode = 1;
  };

  void Emit(Group& group, const std::string& text) {
    if (group.hidden) return;
    if (mPendingSkip > 0) {
      --mPendingSkip;
      return;
    }
    FlushSurrogate();
    mOut += text;
  }

  void FlushSurrogate() {
    if (mHighSurrogate != 0) AppendUtf8(mOut, 0xFFFD);
    mHighSurrogate = 0;
  }

  void Unicode(Group& group, long value) {
    mPendingSkip = 0;
    if (group.hidden) return;
    const std::uint16_t unit = static_cast<std::uint16_t>(value);
    if (unit >= 0xD800 && unit < 0xDC00) {
      FlushSurrogate();
      mHighSurrogate = unit;
    } else if (unit >= 0xDC00 && unit < 0xE000) {
      if (mHighSurrogate != 0) {
        AppendUtf8(mOut, 0x10000 + ((mHighSurrogate - 0xD800) << 10) + (unit - 0xDC00));
        mHighSurrogate = 0;
      } else if (unit < 0xDD00) {
        mOut += static_cast<char>(unit - 0xDC00);  // a byte that was not UTF-8, kept
      }
    } else {
      FlushSurrogate();
      AppendUtf8(mOut, unit);
    }
    mPendingSkip = group.skipAfterUnicode;
  }

  std::size_t ControlAt(std::size_t i, Group& group) {
    const bool wasFirst = group.first;
    group.first = false;
    if (i + 1 >= mRtf.size()) return i + 1;
    const char symbol = mRtf[i + 1];
    if (!std::isalpha(static_cast<unsigned char>(symbol))) {
      if (symbol == '*' && wasFirst) group.hidden = true;
      else if (symbol == '\\' || symbol == '{' || symbol == '}') Emit(group, std::string(1, symbol));
      else if (symbol == '~') Emit(group, "\u00A0");
      else if (symbol == '\'' && i + 3 < mRtf.size()) {
        unsigned value = 0;
        std::sscanf(std::string(mRtf.substr(i + 2, 2)).c_str(), "%2x", &value);
        std::string latin;
        AppendUtf8(latin, value);
        Emit(group, latin);
        return i + 4;
      } else if (symbol == '\r' || symbol == '\n') Emit(group, "\r");
      return i + 2;
    }
    std::size_t j = i + 1;
    while (j < mRtf.size() && std::isalpha(static_cast<unsigned char>(mRtf[j]))) ++j;
    const std::string word(mRtf.substr(i + 1, j - i - 1));
    bool hasValue = false;
    long value = 0;
    const std::size_t valueStart = j;
    if (j < mRtf.size() && (mRtf[j] == '-' || std::isdigit(static_cast<unsigned char>(mRtf[j])))) {
      ++j;
      while (j < mRtf.size() && std::isdigit(static_cast<unsigned char>(mRtf[j]))) ++j;
      value = std::strtol(std::string(mRtf.substr(valueStart, j - valueStart)).c_str(), nullptr, 10);
      hasValue = true;
    }
    if (j < mRtf.size() && mRtf[j] == ' ') ++j;
    if (wasFirst && (word == "fonttbl" || word == "colortbl" || word == "stylesheet" || word == "info" ||
                     word == "pict" || word == "header" || word == "footer" || word == "expandedcolortbl")) {
      group.hidden = true;
    } else if (word == "par" || word == "line" || word == "sect" || word == "page") {
      Emit(group, "\r");
    } else if (word == "tab") {
      Emit(group, "\t");
    } else if (word == "u" && hasValue) {
      Unicode(group, value);
    } else if (word == "uc" && hasValue) {
      group.skipAfterUnicode = static_cast<int>(value);
    }
    return j;
  }

  std::string_view mRtf;
  std::string mOut;
  std::uint16_t mHighSurrogate = 0;
  int mPendingSkip = 0;
};

}  // namespace

std::string MakeRtfDocument(std::string_view text, std::string_view linkAddress, std::string_view linkText) {
  std::string out = "{\\rtf1\\ansi\\ansicpg1252\\deff0\\uc1{\\fonttbl{\\f0\\fswiss Helvetica;}}\n\\f0\\fs24 ";
  const std::size_t at = linkAddress.empty() ? std::string_view::npos : text.find(linkAddress);
  if (at == std::string_view::npos) {
    AppendEscaped(out, text);
  } else {
    AppendEscaped(out, text.substr(0, at));
    out += "by {\\field{\\*\\fldinst{HYPERLINK \"";
    AppendEscaped(out, linkAddress);
    out += "\"}}{\\fldrslt ";
    AppendEscaped(out, linkText);
    out += "}}";
    AppendEscaped(out, text.substr(at + linkAddress.size()));
  }
  out += "}\n";
  return out;
}

std::optional<std::string> ReadRtfText(std::string_view rtf) { return RtfReader(rtf).Read(); }

}  // namespace marigold
