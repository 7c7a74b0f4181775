// Puts the C library and ICU in one time zone (and ICU in the en_US locale) for a test's life.
#pragma once

#include <unicode/locid.h>
#include <unicode/timezone.h>

#include <cstdlib>
#include <ctime>
#include <memory>
#include <optional>
#include <string>

namespace marigold::testing {

class ScopedTimeZone {
 public:
  explicit ScopedTimeZone(const char* zone)
      : mOldZone(icu::TimeZone::createDefault()), mOldLocale(icu::Locale::getDefault()) {
    if (const char* old = std::getenv("TZ")) mOldTz = old;
    icu::Locale::setDefault(icu::Locale("en_US"), mStatus);
    Use(zone);
  }
  ~ScopedTimeZone() {
    if (mOldTz) setenv("TZ", mOldTz->c_str(), 1);
    else unsetenv("TZ");
    tzset();
    icu::TimeZone::adoptDefault(mOldZone.release());
    icu::Locale::setDefault(mOldLocale, mStatus);
  }
  ScopedTimeZone(const ScopedTimeZone&) = delete;
  ScopedTimeZone& operator=(const ScopedTimeZone&) = delete;

  void Use(const char* zone) {
    setenv("TZ", zone, 1);
    tzset();
    icu::TimeZone::adoptDefault(icu::TimeZone::createTimeZone(zone));
  }

 private:
  std::optional<std::string> mOldTz;
  std::unique_ptr<icu::TimeZone> mOldZone;
  icu::Locale mOldLocale;
  UErrorCode mStatus = U_ZERO_ERROR;
};

}  // namespace marigold::testing
