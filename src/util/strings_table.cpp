#include "util/strings_table.h"

#include <sys/stat.h>
#include <unicode/ustring.h>
#include <unicode/utf16.h>
#include <unicode/utf8.h>

#include <cstdlib>
#include <mutex>
#include <shared_mutex>

#include "util/plist_io.h"

namespace marigold {
namespace {

bool Fail(std::string* error, std::string message) {
  if (error) *error = std::move(message);
  return false;
}

// UTF-16 in either byte order -> UTF-8, refusing unpaired surrogates.
bool Utf16ToUtf8(std::string_view bytes, bool bigEndian, std::string& out, std::string* error) {
  if (bytes.size() % 2 != 0) return Fail(error, "the UTF-16 text has an odd number of bytes");
  std::u16string units(bytes.size() / 2, u'\0');
  for (std::size_t i = 0; i < units.size(); ++i) {
    const auto hi = static_cast<std::uint8_t>(bytes[2 * i + (bigEndian ? 0 : 1)]);
    const auto lo = static_cast<std::uint8_t>(bytes[2 * i + (bigEndian ? 1 : 0)]);
    units[i] = static_cast<char16_t>(hi << 8 | lo);
  }
  UErrorCode status = U_ZERO_ERROR;
  int32_t needed = 0;
  u_strToUTF8(nullptr, 0, &needed, units.data(), static_cast<int32_t>(units.size()), &status);
  if (status != U_BUFFER_OVERFLOW_ERROR && U_FAILURE(status)) {
    return Fail(error, "the UTF-16 text is not valid");
  }
  out.assign(static_cast<std::size_t>(needed), '\0');
  status = U_ZERO_ERROR;
  u_strToUTF8(out.data(), needed, nullptr, units.data(), static_cast<int32_t>(units.size()), &status);
  if (U_FAILURE(status)) return Fail(error, "the UTF-16 text is not valid");
  return true;
}

bool IsValidUtf8(std::string_view text) {
  const auto* bytes = reinterpret_cast<const std::uint8_t*>(text.data());
  const auto length = static_cast<int32_t>(text.size());
  int32_t i = 0;
  while (i < length) {
    UChar32 c = 0;
    U8_NEXT(bytes, i, length, c);
    if (c < 0) return false;
  }
  return true;
}

// The file's text as UTF-8. A byte-order mark decides the encoding; without one, a zero byte in
// the first pair betrays UTF-16 written without a mark, and anything else must be UTF-8.
bool DecodeText(std::string_view bytes, std::string& out, std::string* error) {
  if (bytes.substr(0, 3) == "\xEF\xBB\xBF") bytes.remove_prefix(3);
  else if (bytes.substr(0, 2) == "\xFF\xFE") return Utf16ToUtf8(bytes.substr(2), false, out, error);
  else if (bytes.substr(0, 2) == "\xFE\xFF") return Utf16ToUtf8(bytes.substr(2), true, out, error);
  else if (bytes.size() >= 2 && bytes[0] == '\0' && bytes[1] != '\0')
    return Utf16ToUtf8(bytes, true, out, error);
  else if (bytes.size() >= 2 && bytes[0] != '\0' && bytes[1] == '\0')
    return Utf16ToUtf8(bytes, false, out, error);
  if (!IsValidUtf8(bytes)) return Fail(error, "the text is neither UTF-8 nor UTF-16");
  out.assign(bytes);
  return true;
}

class StringsParser {
 public:
  StringsParser(std::string_view text, std::string* error) : mText(text), mError(error) {}

  std::optional<StringTable> Parse() {
    StringTable table;
    for (;;) {
      if (!SkipBlanks()) return std::nullopt;
      if (AtEnd()) return table;
      std::string key, value;
      if (!ReadToken(key)) return std::nullopt;
      if (!SkipBlanks()) return std::nullopt;
      if (Peek() == ';') {
        // A key alone stands for itself, as older tables wrote untranslated entries.
        ++mPos;
        table.insert_or_assign(key, key);
        continue;
      }
      if (Peek() != '=') return Error("\"=\" expected after a key");
      ++mPos;
      if (!SkipBlanks()) return std::nullopt;
      if (!ReadToken(value)) return std::nullopt;
      if (!SkipBlanks()) return std::nullopt;
      if (Peek() != ';') return Error("\";\" expected after a value");
      ++mPos;
      table.insert_or_assign(std::move(key), std::move(value));
    }
  }

 private:
  bool AtEnd() const { return mPos >= mText.size(); }
  char Peek() const { return AtEnd() ? '\0' : mText[mPos]; }

  std::nullopt_t Error(std::string_view why) {
    std::size_t line = 1;
    for (std::size_t i = 0; i < mPos && i < mText.size(); ++i) line += mText[i] == '\n';
    Fail(mError, "line " + std::to_string(line) + ": " + std::string(why));
    return std::nullopt;
  }

  bool SkipBlanks() {
    while (!AtEnd()) {
      const char c = mText[mPos];
      if (c == ' ' || c == '\t' || c == '\r' || c == '\n' || c == '\f' || c == '\v') {
        ++mPos;
      } else if (mText.substr(mPos, 2) == "//") {
        const std::size_t end = mText.find('\n', mPos);
        mPos = end == std::string_view::npos ? mText.size() : end + 1;
      } else if (mText.substr(mPos, 2) == "/*") {
        const std::size_t end = mText.find("*/", mPos + 2);
        if (end == std::string_view::npos) {
          Error("unterminated comment");
          return false;
        }
        mPos = end + 2;
      } else {
        break;
      }
    }
    return true;
  }

  static bool IsBareChar(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_' ||
           c == '.' || c == '$' || c == ':' || c == '/' || c == '-';
  }

  bool ReadToken(std::string& out) {
    if (Peek() == '"') return ReadQuoted(out);
    const std::size_t start = mPos;
    while (!AtEnd() && IsBareChar(mText[mPos]) && mText.substr(mPos, 2) != "//" &&
           mText.substr(mPos, 2) != "/*")
      ++mPos;
    if (mPos == start) {
      Error(AtEnd() ? "unexpected end of the table" : "a quoted string was expected");
      return false;
    }
    out.assign(mText.substr(start, mPos - start));
    return true;
  }

  bool ReadHexUnit(char16_t& unit) {
    unit = 0;
    for (int i = 0; i < 4; ++i, ++mPos) {
      const char c = Peek();
      int digit = -1;
      if (c >= '0' && c <= '9') digit = c - '0';
      else if (c >= 'a' && c <= 'f') digit = c - 'a' + 10;
      else if (c >= 'A' && c <= 'F') digit = c - 'A' + 10;
      if (digit < 0) {
        Error("\\U needs four hexadecimal digits");
        return false;
      }
      unit = static_cast<char16_t>(unit << 4 | digit);
    }
    return true;
  }

  // \UXXXX names a UTF-16 unit; characters outside the basic plane come as a surrogate pair.
  bool ReadUnicodeEscape(std::string& out) {
    char16_t unit = 0;
    if (!ReadHexUnit(unit)) return false;
    UChar32 c = unit;
    if (U16_IS_LEAD(unit)) {
      char16_t trail = 0;
      if (mText.substr(mPos, 2) != "\\U" && mText.substr(mPos, 2) != "\\u") {
        Error("unpaired surrogate in \\U escape");
        return false;
      }
      mPos += 2;
      if (!ReadHexUnit(trail)) return false;
      if (!U16_IS_TRAIL(trail)) {
        Error("unpaired surrogate in \\U escape");
        return false;
      }
      c = U16_GET_SUPPLEMENTARY(unit, trail);
    } else if (U16_IS_TRAIL(unit)) {
      Error("unpaired surrogate in \\U escape");
      return false;
    }
    char buffer[4];
    int32_t length = 0;
    U8_APPEND_UNSAFE(buffer, length, c);
    out.append(buffer, static_cast<std::size_t>(length));
    return true;
  }

  bool ReadQuoted(std::string& out) {
    ++mPos;
    for (;;) {
      if (AtEnd()) {
        Error("unterminated string");
        return false;
      }
      const char c = mText[mPos++];
      if (c == '"') return true;
      if (c != '\\') {
        out.push_back(c);
        continue;
      }
      if (AtEnd()) continue;
      const char e = mText[mPos++];
      switch (e) {
        case 'n': out.push_back('\n'); break;
        case 'r': out.push_back('\r'); break;
        case 't': out.push_back('\t'); break;
        case 'U':
        case 'u':
          if (!ReadUnicodeEscape(out)) return false;
          break;
        default: out.push_back(e); break;  // \" \\ and any other character stand for themselves
      }
    }
  }

  std::string_view mText;
  std::string* mError;
  std::size_t mPos = 0;
};

// "fr_FR.UTF-8@euro" -> "fr_FR"; the codeset and modifier never name a table.
std::string StripCodeset(std::string_view locale) {
  return std::string(locale.substr(0, locale.find_first_of(".@")));
}

bool IsUsableLanguage(const std::string& name) {
  return !name.empty() && name != "C" && name != "POSIX" && name.find('/') == std::string::npos &&
         name.find("..") == std::string::npos;
}

void AddLanguage(std::vector<std::string>& list, const std::string& name) {
  if (!IsUsableLanguage(name)) return;
  for (const std::string& known : list)
    if (known == name) return;
  list.push_back(name);
}

std::string EnvText(const char* name) {
  const char* value = std::getenv(name);
  return value ? value : "";
}

std::shared_mutex gTableMutex;
StringTable gTable;

}  // namespace

std::optional<StringTable> ParseStringsFile(std::string_view bytes, std::string* error) {
  std::string text;
  if (!DecodeText(bytes, text, error)) return std::nullopt;
  return StringsParser(text, error).Parse();
}

std::vector<std::string> PreferredLanguages() {
  std::vector<std::string> languages;
  // LANGUAGE lists whole locales ("pt_BR:fr"); a regional entry is followed by its language,
  // since most tables exist only per language.
  std::string list = EnvText("LANGUAGE");
  for (std::size_t start = 0; start <= list.size();) {
    std::size_t end = list.find(':', start);
    if (end == std::string::npos) end = list.size();
    const std::string entry = StripCodeset(std::string_view(list).substr(start, end - start));
    AddLanguage(languages, entry);
    AddLanguage(languages, entry.substr(0, entry.find('_')));
    start = end + 1;
  }
  // The message locale is the first of these that is set, as the C library decides it.
  for (const char* name : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
    const std::string value = EnvText(name);
    if (value.empty()) continue;
    const std::string locale = StripCodeset(value);
    AddLanguage(languages, locale.substr(0, locale.find('_')));
    break;
  }
  AddLanguage(languages, "en");
  return languages;
}

std::optional<StringTable> LoadStringTable(const std::vector<std::string>& resourceFolders,
                                           const std::vector<std::string>& languages,
                                           std::string* foundPath) {
  for (const std::string& language : languages) {
    if (!IsUsableLanguage(language)) continue;
    for (const std::string& folder : resourceFolders) {
      const std::string path = folder + "/" + language + ".lproj/Localizable.strings";
      struct stat st {};
      if (::stat(path.c_str(), &st) != 0 || !S_ISREG(st.st_mode)) continue;
      // The first table found is the one used; a damaged one is not silently skipped.
      if (foundPath) *foundPath = path;
      std::optional<std::string> bytes = ReadWholeFile(path, std::size_t{64} << 20);
      if (!bytes) return std::nullopt;
      return ParseStringsFile(*bytes);
    }
  }
  return std::nullopt;
}

void SetStringTable(StringTable table) {
  std::unique_lock lock(gTableMutex);
  gTable = std::move(table);
}

std::string GLS(std::string_view key) {
  if (key.empty()) return "";
  std::shared_lock lock(gTableMutex);
  auto found = gTable.find(key);
  if (found == gTable.end() || found->second.empty()) return std::string(key);
  return found->second;
}

}  // namespace marigold
