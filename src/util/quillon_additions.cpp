#include "util/quillon_additions.h"

#include <unicode/gregocal.h>
#include <unicode/smpdtfmt.h>
#include <unicode/uchar.h>
#include <unicode/utf8.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <chrono>
#include <cmath>
#include <ctime>
#include <memory>
#include <vector>

namespace marigold {
namespace {

// Unix time of the property-list epoch, 2001-01-01 00:00:00 UTC.
constexpr double kPlistEpochUnixSeconds = 978307200.0;

// The next case-folded code point of `text` from byte `i`. A byte that is not part of valid UTF-8
// becomes a value above the Unicode range, so it only ever equals the same byte.
UChar32 NextFolded(std::string_view text, std::int32_t& i) {
  const auto* bytes = reinterpret_cast<const std::uint8_t*>(text.data());
  const auto length = static_cast<std::int32_t>(text.size());
  const std::int32_t start = i;
  UChar32 c = 0;
  U8_NEXT(bytes, i, length, c);
  if (c >= 0) return u_foldCase(c, U_FOLD_CASE_DEFAULT);
  i = start + 1;
  return 0x110000 + bytes[start];
}

std::vector<UChar32> Folded(std::string_view text) {
  std::vector<UChar32> out;
  out.reserve(text.size());
  for (std::int32_t i = 0; i < static_cast<std::int32_t>(text.size());) out.push_back(NextFolded(text, i));
  return out;
}

// Walks both texts together without copying them: names are compared this way in every scan.
// Returns whether all of `prefix` matched; `wholeText` also asks that `text` ends there.
bool FoldedStartsWith(std::string_view text, std::string_view prefix, bool wholeText) {
  std::int32_t i = 0, j = 0;
  const auto textLength = static_cast<std::int32_t>(text.size());
  const auto prefixLength = static_cast<std::int32_t>(prefix.size());
  while (j < prefixLength) {
    if (i >= textLength || NextFolded(text, i) != NextFolded(prefix, j)) return false;
  }
  return !wholeText || i >= textLength;
}

double UDateFromDate(PlistDate date) { return (date.seconds + kPlistEpochUnixSeconds) * 1000.0; }
PlistDate DateFromUDate(UDate udate) { return PlistDate{udate / 1000.0 - kPlistEpochUnixSeconds}; }

// A Gregorian calendar in the default time zone and locale, set to `date`. Made per call: the
// default zone may change (tests set it), and a calendar is not safe to share between threads.
std::unique_ptr<icu::Calendar> CalendarAt(PlistDate date) {
  UErrorCode status = U_ZERO_ERROR;
  auto calendar = std::make_unique<icu::GregorianCalendar>(status);
  if (U_FAILURE(status)) return nullptr;
  calendar->setTime(UDateFromDate(date), status);
  if (U_FAILURE(status)) return nullptr;
  return calendar;
}

int Field(PlistDate date, UCalendarDateFields field) {
  auto calendar = CalendarAt(date);
  if (!calendar) return 0;
  UErrorCode status = U_ZERO_ERROR;
  const int value = calendar->get(field, status);
  return U_FAILURE(status) ? 0 : value;
}

// The date with the given fields and all smaller ones cleared.
PlistDate Cleared(PlistDate date, std::initializer_list<UCalendarDateFields> fields) {
  auto calendar = CalendarAt(date);
  if (!calendar) return date;
  for (UCalendarDateFields field : fields) calendar->set(field, 0);
  UErrorCode status = U_ZERO_ERROR;
  const UDate result = calendar->getTime(status);
  return U_FAILURE(status) ? date : DateFromUDate(result);
}

}  // namespace

bool HasPrefix(std::string_view text, std::string_view prefix) { return text.starts_with(prefix); }

bool HasSuffix(std::string_view text, std::string_view suffix) { return text.ends_with(suffix); }

bool Contains(std::string_view text, std::string_view part) {
  return text.find(part) != std::string_view::npos;
}

bool HasPrefixIgnoringCase(std::string_view text, std::string_view prefix) {
  return FoldedStartsWith(text, prefix, false);
}

bool HasSuffixIgnoringCase(std::string_view text, std::string_view suffix) {
  const std::vector<UChar32> t = Folded(text), s = Folded(suffix);
  return s.size() <= t.size() && std::equal(s.begin(), s.end(), t.end() - static_cast<std::ptrdiff_t>(s.size()));
}

bool ContainsIgnoringCase(std::string_view text, std::string_view part) {
  const std::vector<UChar32> t = Folded(text), p = Folded(part);
  return std::search(t.begin(), t.end(), p.begin(), p.end()) != t.end() || p.empty();
}

bool EqualIgnoringCase(std::string_view a, std::string_view b) { return FoldedStartsWith(a, b, true); }

std::string CaseFolded(std::string_view text) {
  std::string out;
  out.reserve(text.size());
  for (std::int32_t i = 0; i < static_cast<std::int32_t>(text.size());) {
    const auto byte = static_cast<unsigned char>(text[static_cast<std::size_t>(i)]);
    if (byte < 0x80) {  // most names are ASCII: fold them without decoding
      out.push_back(static_cast<char>(byte >= 'A' && byte <= 'Z' ? byte + ('a' - 'A') : byte));
      ++i;
      continue;
    }
    const std::int32_t start = i;
    const UChar32 c = NextFolded(text, i);
    if (c > 0x10FFFF) {
      out.push_back(text[static_cast<std::size_t>(start)]);
      continue;
    }
    char bytes[U8_MAX_LENGTH];
    std::int32_t length = 0;
    U8_APPEND_UNSAFE(bytes, length, c);  // a folded code point is valid and fits in four bytes
    out.append(bytes, static_cast<std::size_t>(length));
  }
  return out;
}

bool setObjectNotInList(PlistDict& dict, std::string_view key, PlistValue value) {
  if (key.empty() || dict.Contains(key)) return false;
  dict.Set(key, std::move(value));
  return true;
}

void MoveObjectForKey(PlistDict& from, std::string_view key, PlistDict& to) {
  PlistValue* value = from.Find(key);
  if (!value) return;
  to.Set(key, std::move(*value));
  from.Remove(key);
}

PlistDate Now() {
  const auto since = std::chrono::system_clock::now().time_since_epoch();
  return DateFromUnixSeconds(std::chrono::duration<double>(since).count());
}

PlistDate DateFromUnixSeconds(double unixSeconds) {
  return PlistDate{unixSeconds - kPlistEpochUnixSeconds};
}

double UnixSecondsFromDate(PlistDate date) { return date.seconds + kPlistEpochUnixSeconds; }

namespace {
constexpr const char* kIsoUtcFormat = "%Y-%m-%dT%H:%M:%SZ";
}  // namespace

std::string IsoUtcDateText(PlistDate date) {
  const auto seconds = static_cast<std::time_t>(std::floor(UnixSecondsFromDate(date)));
  std::tm parts{};
  char text[32] = "";
  if (::gmtime_r(&seconds, &parts) != nullptr) std::strftime(text, sizeof text, kIsoUtcFormat, &parts);
  return text;
}

std::optional<PlistDate> ParseIsoUtcDate(std::string_view text) {
  if (text.size() > 31) return std::nullopt;
  const std::string copy(text);
  std::tm parts{};
  const char* end = ::strptime(copy.c_str(), kIsoUtcFormat, &parts);
  if (end == nullptr || *end != '\0') return std::nullopt;
  const std::time_t seconds = ::timegm(&parts);
  // strptime takes "2024-5-1T9:3:0Z" and 30 February; only the spelling of a real moment counts.
  const PlistDate date = DateFromUnixSeconds(static_cast<double>(seconds));
  if (IsoUtcDateText(date) != copy) return std::nullopt;
  return date;
}

PlistDate TruncateSeconds(PlistDate date) { return Cleared(date, {UCAL_SECOND, UCAL_MILLISECOND}); }

PlistDate TruncateHours(PlistDate date) {
  return Cleared(date, {UCAL_HOUR_OF_DAY, UCAL_MINUTE, UCAL_SECOND, UCAL_MILLISECOND});
}

int CompareDay(PlistDate date, PlistDate other) {
  const double a = TruncateHours(date).seconds, b = TruncateHours(other).seconds;
  return a < b ? -1 : (a > b ? 1 : 0);
}

bool IsSameDay(PlistDate date, PlistDate other) { return CompareDay(date, other) == 0; }

int MinutesOfDay(PlistDate date) {
  auto calendar = CalendarAt(date);
  if (!calendar) return 0;
  UErrorCode status = U_ZERO_ERROR;
  const int hour = calendar->get(UCAL_HOUR_OF_DAY, status);
  const int minute = calendar->get(UCAL_MINUTE, status);
  return U_FAILURE(status) ? 0 : hour * 60 + minute;
}

int DayOfWeek(PlistDate date) { return Field(date, UCAL_DAY_OF_WEEK) - UCAL_SUNDAY; }
int Year(PlistDate date) { return Field(date, UCAL_YEAR); }
int Hour(PlistDate date) { return Field(date, UCAL_HOUR_OF_DAY); }
int Minute(PlistDate date) { return Field(date, UCAL_MINUTE); }

// Components are added from the largest down, each clamping the day to its month, as the
// Gregorian calendar does: 29 February 2024 + 1 year + 1 month is 28 March 2025, not the 29th.
PlistDate DateByAddingYears(PlistDate date, int years, int months, int days, int hours, int minutes,
                            int seconds) {
  auto calendar = CalendarAt(date);
  if (!calendar) return date;
  UErrorCode status = U_ZERO_ERROR;
  const std::pair<UCalendarDateFields, int> steps[] = {{UCAL_YEAR, years},     {UCAL_MONTH, months},
                                                       {UCAL_DATE, days},      {UCAL_HOUR, hours},
                                                       {UCAL_MINUTE, minutes}, {UCAL_SECOND, seconds}};
  for (const auto& [field, amount] : steps)
    if (amount != 0) calendar->add(field, amount, status);
  const UDate result = calendar->getTime(status);
  return U_FAILURE(status) ? date : DateFromUDate(result);
}

std::string StringWithFormat(PlistDate date, std::string_view pattern) { return StringWithFormat(date, pattern, "", ""); }

std::string StringWithFormat(PlistDate date, std::string_view pattern, const std::string& localeName,
                             const std::string& timeZoneId) {
  UErrorCode status = U_ZERO_ERROR;
  const icu::UnicodeString icuPattern =
      icu::UnicodeString::fromUTF8(icu::StringPiece(pattern.data(), static_cast<std::int32_t>(pattern.size())));
  const icu::Locale locale = localeName.empty() ? icu::Locale::getDefault() : icu::Locale(localeName.c_str());
  icu::SimpleDateFormat format(icuPattern, locale, status);
  if (U_FAILURE(status)) return "";
  if (!timeZoneId.empty()) format.adoptTimeZone(icu::TimeZone::createTimeZone(timeZoneId.c_str()));
  icu::UnicodeString text;
  format.format(UDateFromDate(date), text);
  std::string out;
  text.toUTF8String(out);
  return out;
}

std::optional<PlistDate> DateFromStrptime(std::string_view text, const char* format) {
  const std::string copy(text);
  std::tm parts{};
  // Fields the format leaves out keep a real day rather than the day before the 1st.
  parts.tm_mday = 1;
  const char* end = ::strptime(copy.c_str(), format, &parts);
  if (!end) return std::nullopt;
  while (*end && std::isspace(static_cast<unsigned char>(*end))) ++end;
  if (*end) return std::nullopt;
  parts.tm_isdst = -1;
  errno = 0;
  const std::time_t unixTime = std::mktime(&parts);
  if (unixTime == static_cast<std::time_t>(-1) && errno != 0) return std::nullopt;
  return DateFromUnixSeconds(static_cast<double>(unixTime));
}

}  // namespace marigold
