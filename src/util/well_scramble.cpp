#include "util/well_scramble.h"

#include <unicode/utf8.h>

#include <random>

#include "util/plist_io.h"

namespace marigold {
namespace {

// The fixed pass phrase of every stored password: 19 characters, 22 UTF-8 bytes
// ("kd4;w<<§730!òòp>&e9"). Written as bytes so that the source encoding cannot change it.
constexpr std::uint8_t kPassPhrase[] = {107, 100, 52, 59, 119, 60, 60, 194, 167, 55, 51,
                                        48,  33,  195, 178, 195, 178, 112, 62, 38, 101, 57};
constexpr std::size_t kPassPhraseLength = sizeof kPassPhrase;
constexpr std::uint8_t kFirstPrevious = 97;

// Each byte is mixed with the pass phrase, its position and the plain byte before it, so older
// documents must keep reading back byte for byte.
PlistData Scramble(std::string_view plain) {
  PlistData out(plain.size());
  std::uint8_t prev = kFirstPrevious;
  for (std::size_t i = 0; i < plain.size(); ++i) {
    const auto b = static_cast<std::uint8_t>(plain[i]);
    const auto t = static_cast<std::uint8_t>(kPassPhrase[i % kPassPhraseLength] + prev);
    prev = b;
    out[i] = static_cast<std::uint8_t>(i + t + b);
  }
  return out;
}

std::string Unscramble(const PlistData& data) {
  std::string out(data.size(), '\0');
  std::uint8_t prev = kFirstPrevious;
  for (std::size_t i = 0; i < data.size(); ++i) {
    const auto b = static_cast<std::uint8_t>(data[i] - kPassPhrase[i % kPassPhraseLength] - prev - i);
    out[i] = static_cast<char>(b);
    prev = b;
  }
  return out;
}

// Code points in `text`, or -1 when it is not valid UTF-8.
std::int64_t CountCodePoints(std::string_view text, std::size_t* firstLength) {
  std::int64_t count = 0;
  const auto* bytes = reinterpret_cast<const std::uint8_t*>(text.data());
  const auto length = static_cast<std::int32_t>(text.size());
  std::int32_t i = 0;
  while (i < length) {
    UChar32 c = 0;
    U8_NEXT(bytes, i, length, c);
    if (c < 0) return -1;
    if (count == 0 && firstLength) *firstLength = static_cast<std::size_t>(i);
    ++count;
  }
  return count;
}

char RandomDigit() {
  thread_local std::mt19937 generator{std::random_device{}()};
  const unsigned value = std::uniform_int_distribution<unsigned>{}(generator) % 255;
  return std::to_string(value).front();
}

}  // namespace

PlistData SetWellData(std::string_view password) {
  return SetWellDataWithDigit(password, RandomDigit());
}

PlistData SetWellDataWithDigit(std::string_view password, char digit) {
  if (password.empty()) return {};
  std::string plain(1, digit);
  plain.append(password);
  return Scramble(plain);
}

std::string GetWellData(const PlistData& data) {
  if (data.empty()) return "";
  std::string plain = Unscramble(data);
  std::size_t firstLength = 0;
  const std::int64_t count = CountCodePoints(plain, &firstLength);
  // Damaged bytes read as no password rather than as garbage; one- and two-character passwords
  // are deliberately not restored, as older versions did.
  if (count < 0) return "";
  if (count - 1 < 3) return "";
  return plain.substr(firstLength);
}

// The account dictionary has no random digit in front and no length rule: its bytes are the
// whole XML property list, which a dropped first character would only damage.
PlistData SetWellDict(const PlistDict& dict) {
  return Scramble(ToXmlPlist(PlistValue(dict)));
}

std::optional<PlistDict> GetWellDict(const PlistData& data) {
  if (data.empty()) return std::nullopt;
  std::optional<PlistValue> value = ParsePlist(Unscramble(data));
  if (!value || !value->IsDict()) return std::nullopt;
  return std::move(*value->AsDict());
}

}  // namespace marigold
