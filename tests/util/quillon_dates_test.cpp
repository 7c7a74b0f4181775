#include <gtest/gtest.h>
#include <unicode/locid.h>

#include <ctime>

#include "support/scoped_time_zone.h"
#include "util/quillon_additions.h"

namespace marigold {
namespace {

// A moment given in UTC, worked out without the code under test.
PlistDate Utc(int year, int month, int day, int hour, int minute, double second = 0) {
  std::tm parts{};
  parts.tm_year = year - 1900;
  parts.tm_mon = month - 1;
  parts.tm_mday = day;
  parts.tm_hour = hour;
  parts.tm_min = minute;
  return PlistDate{static_cast<double>(timegm(&parts)) + second - 978307200.0};
}

// Dates in a fixed zone and locale: Paris has a +1 h winter, a +2 h summer, and a change of
// clocks on 31 March 2024 at 02:00 local.
class LocalDates : public ::testing::Test {
 protected:
  void UseZone(const char* zone) { mZone.Use(zone); }
  testing::ScopedTimeZone mZone{"Europe/Paris"};
  UErrorCode mStatus = U_ZERO_ERROR;
};

TEST_F(LocalDates, ComponentsFollowTheZone) {
  const PlistDate newYear = Utc(2001, 1, 1, 0, 0);  // Monday 01:00 in Paris
  EXPECT_EQ(DayOfWeek(newYear), 1);
  EXPECT_EQ(MinutesOfDay(newYear), 60);
  EXPECT_EQ(Year(Utc(2023, 12, 31, 23, 30)), 2024);
  EXPECT_EQ(Hour(Utc(2024, 7, 1, 22, 15)), 0);
  EXPECT_EQ(Minute(Utc(2024, 7, 1, 22, 15)), 15);
  UseZone("America/Los_Angeles");
  EXPECT_EQ(DayOfWeek(newYear), 0);  // still Sunday afternoon
  EXPECT_EQ(MinutesOfDay(newYear), 16 * 60);
  EXPECT_EQ(Year(newYear), 2000);
}

TEST_F(LocalDates, Truncation) {
  EXPECT_EQ(TruncateSeconds(Utc(2024, 5, 6, 10, 34, 56.789)), Utc(2024, 5, 6, 10, 34));
  EXPECT_EQ(TruncateSeconds(Utc(1999, 12, 31, 23, 59, 59.5)), Utc(1999, 12, 31, 23, 59));
  // Local midnight: 23:00 UTC the day before in winter, 22:00 in summer.
  EXPECT_EQ(TruncateHours(Utc(2024, 1, 15, 12, 0)), Utc(2024, 1, 14, 23, 0));
  EXPECT_EQ(TruncateHours(Utc(2024, 3, 31, 12, 0)), Utc(2024, 3, 30, 23, 0));
  EXPECT_EQ(TruncateHours(Utc(2024, 4, 1, 12, 0)), Utc(2024, 3, 31, 22, 0));
}

TEST_F(LocalDates, CompareDayUsesLocalDays) {
  const PlistDate lateEvening = Utc(2024, 6, 10, 21, 30);  // 23:30 local
  const PlistDate afterMidnight = Utc(2024, 6, 10, 22, 30);  // 00:30 local, next day
  EXPECT_EQ(CompareDay(lateEvening, afterMidnight), -1);
  EXPECT_EQ(CompareDay(afterMidnight, lateEvening), 1);
  EXPECT_EQ(CompareDay(Utc(2024, 6, 9, 22, 0), lateEvening), 0);
  EXPECT_TRUE(IsSameDay(Utc(2024, 6, 9, 22, 0), lateEvening));
  EXPECT_FALSE(IsSameDay(lateEvening, afterMidnight));
}

struct AddCase {
  const char* name;
  PlistDate (*start)();
  int years, months, days, hours, minutes, seconds;
  PlistDate (*want)();
};

class DateAddition : public LocalDates, public ::testing::WithParamInterface<AddCase> {};

TEST_P(DateAddition, CalendarRules) {
  const AddCase& c = GetParam();
  EXPECT_EQ(DateByAddingYears(c.start(), c.years, c.months, c.days, c.hours, c.minutes, c.seconds),
            c.want());
}

#define AT(...) [] { return Utc(__VA_ARGS__); }

// Starting moments are UTC; Paris is UTC+1 in winter and UTC+2 in summer.
INSTANTIATE_TEST_SUITE_P(
    Paris, DateAddition,
    ::testing::Values(
        AddCase{"MonthEndClampsLeap", AT(2024, 1, 31, 9, 0), 0, 1, 0, 0, 0, 0, AT(2024, 2, 29, 9, 0)},
        AddCase{"MonthEndClamps", AT(2023, 1, 31, 9, 0), 0, 1, 0, 0, 0, 0, AT(2023, 2, 28, 9, 0)},
        // Years first: 29 February 2024 + 1 year is 28 February 2025, then + 1 month 28 March.
        AddCase{"YearsBeforeMonths", AT(2024, 2, 29, 9, 0), 1, 1, 0, 0, 0, 0, AT(2025, 3, 28, 9, 0)},
        AddCase{"DayKeepsWallClockOverDst", AT(2024, 3, 30, 11, 0), 0, 0, 1, 0, 0, 0, AT(2024, 3, 31, 10, 0)},
        AddCase{"HoursAreElapsedTime", AT(2024, 3, 30, 11, 0), 0, 0, 0, 24, 0, 0, AT(2024, 3, 31, 11, 0)},
        AddCase{"MinutesCarry", AT(2024, 12, 31, 22, 50), 0, 0, 0, 0, 20, 0, AT(2024, 12, 31, 23, 10)},
        AddCase{"Backwards", AT(2024, 3, 1, 11, 0), 0, -1, -1, 0, 0, -60, AT(2024, 1, 31, 10, 59)},
        AddCase{"Nothing", AT(2024, 5, 5, 5, 5), 0, 0, 0, 0, 0, 0, AT(2024, 5, 5, 5, 5)}),
    [](const auto& info) { return std::string(info.param.name); });
#undef AT

TEST_F(LocalDates, StringWithFormatUsesLocaleAndZone) {
  const PlistDate afternoon = Utc(2024, 7, 4, 12, 5, 9);  // 14:05:09 local
  EXPECT_EQ(StringWithFormat(afternoon, "EEEE, MMMM dd, yyyy - HH:mm:ss"),
            "Thursday, July 04, 2024 - 14:05:09");
  EXPECT_EQ(StringWithFormat(afternoon, "hh:mm 'at' EEE d MMM"), "02:05 at Thu 4 Jul");
  icu::Locale::setDefault(icu::Locale("fr_FR"), mStatus);
  EXPECT_EQ(StringWithFormat(afternoon, "EEEE d MMMM"), "jeudi 4 juillet");
}

TEST_F(LocalDates, DateFromStrptimeReadsLocalTime) {
  EXPECT_EQ(DateFromStrptime("05 03 2024, 14:30", "%d %m %Y, %H:%M"), Utc(2024, 3, 5, 13, 30));
  EXPECT_EQ(DateFromStrptime("05 07 2024, 14:30 ", "%d %m %Y, %H:%M"), Utc(2024, 7, 5, 12, 30));
  EXPECT_EQ(DateFromStrptime("2024", "%Y"), Utc(2023, 12, 31, 23, 0));
  EXPECT_EQ(DateFromStrptime("05 03 2024", "%d %m %Y, %H:%M"), std::nullopt);
  EXPECT_EQ(DateFromStrptime("05 03 2024, 14:30 and more", "%d %m %Y, %H:%M"), std::nullopt);
  EXPECT_EQ(DateFromStrptime("soon", "%d %m %Y"), std::nullopt);
}

}  // namespace
}  // namespace marigold
