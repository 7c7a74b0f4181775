// A clock that stands still in a named zone until a test moves it.
#pragma once

#include <atomic>
#include <string>

#include "platform/clock.h"

namespace marigold {

class FixedClock : public Clock {
 public:
  FixedClock(double unixSeconds, std::string zone) : mNow(unixSeconds), mZone(std::move(zone)) {}
  double Now() const override { return mNow.load(); }
  std::string TimeZoneName() const override { return mZone; }
  void Set(double unixSeconds) { mNow = unixSeconds; }

 private:
  std::atomic<double> mNow;
  std::string mZone;
};

}  // namespace marigold
