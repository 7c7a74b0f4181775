// The run's clock: the time now and the time zone that dates are shown in. Runs, the log and the
// timers ask this seam instead of the system, so tests can fix the time and the zone.
#pragma once

#include <string>

namespace marigold {

class Clock {
 public:
  virtual ~Clock() = default;
  // Seconds since 1970-01-01 UTC, with the fraction. Any thread.
  virtual double Now() const = 0;
  // The IANA name of the zone local dates are shown in ("Europe/Rome"); "" means the system's.
  virtual std::string TimeZoneName() const = 0;
};

// The system's clock and zone (TZ, then /etc/localtime).
Clock& SystemClock();

}  // namespace marigold
