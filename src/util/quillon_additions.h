// Small helpers on strings, dictionaries and dates that every subsystem uses.
// Dates are PlistDate values (seconds since 2001-01-01 UTC); the calendar helpers work in the
// user's Gregorian calendar and local time zone (ICU's default, which follows TZ).
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "util/plist_value.h"

namespace marigold {

// Prefix, suffix and containment tests. The "IgnoringCase" forms fold case per code point
// (simple case folding), as file names are compared; invalid UTF-8 bytes compare as themselves.
// An empty prefix, suffix or part is found in every text. All of these are safe on any thread.
bool HasPrefix(std::string_view text, std::string_view prefix);
bool HasSuffix(std::string_view text, std::string_view suffix);
bool Contains(std::string_view text, std::string_view part);
bool HasPrefixIgnoringCase(std::string_view text, std::string_view prefix);
bool HasSuffixIgnoringCase(std::string_view text, std::string_view suffix);
bool ContainsIgnoringCase(std::string_view text, std::string_view part);
bool EqualIgnoringCase(std::string_view a, std::string_view b);
// The text with each code point case-folded, as UTF-8: two texts are EqualIgnoringCase exactly
// when their folded forms are equal, so the result can key a hash set. Invalid bytes stay as they are.
std::string CaseFolded(std::string_view text);

// Sets the value only when the key is non-empty and not yet present. Returns whether it set.
bool setObjectNotInList(PlistDict& dict, std::string_view key, PlistValue value);
// Moves the value of `key` from `from` into `to`, removing it from `from`; nothing when absent.
void MoveObjectForKey(PlistDict& from, std::string_view key, PlistDict& to);

// The current moment.
PlistDate Now();
// Conversions between property-list dates and Unix time.
PlistDate DateFromUnixSeconds(double unixSeconds);
double UnixSecondsFromDate(PlistDate date);
// A moment as XML property lists spell it, "2024-05-01T09:30:00Z" (UTC, whole seconds).
std::string IsoUtcDateText(PlistDate date);
// Reads that spelling; nothing for any other, or for a moment that does not exist (30 February).
std::optional<PlistDate> ParseIsoUtcDate(std::string_view text);

PlistDate TruncateSeconds(PlistDate date);        // seconds and below set to zero
PlistDate TruncateHours(PlistDate date);          // local midnight of the date's day
int CompareDay(PlistDate date, PlistDate other);  // -1 earlier day, 0 same day, 1 later day
bool IsSameDay(PlistDate date, PlistDate other);
int MinutesOfDay(PlistDate date);                 // hour * 60 + minute, local time
int DayOfWeek(PlistDate date);                    // 0 = Sunday ... 6 = Saturday
int Year(PlistDate date);
int Hour(PlistDate date);
int Minute(PlistDate date);
// Calendar addition, largest component first (years, then months, days, hours, minutes,
// seconds); month ends clamp (31 January + 1 month is the last day of February).
PlistDate DateByAddingYears(PlistDate date, int years, int months, int days, int hours, int minutes,
                            int seconds);
// Formats with a Unicode date pattern ("EEEE, MMMM dd, yyyy - HH:mm:ss") in the user's locale.
std::string StringWithFormat(PlistDate date, std::string_view pattern);
// The same in a named locale ("fr_FR") and time zone ("Europe/Paris"); an empty name stands for
// the user's. "" when the pattern is not valid.
std::string StringWithFormat(PlistDate date, std::string_view pattern, const std::string& localeName,
                             const std::string& timeZoneId);
// Parses local time with a strptime format ("%d %m %Y, %H:%M"); nothing when it does not match.
std::optional<PlistDate> DateFromStrptime(std::string_view text, const char* format);

}  // namespace marigold
