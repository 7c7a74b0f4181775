#include "platform/clock.h"

#include <chrono>

namespace marigold {
namespace {

class RealClock : public Clock {
 public:
  double Now() const override {
    return std::chrono::duration<double>(std::chrono::system_clock::now().time_since_epoch()).count();
  }
  std::string TimeZoneName() const override { return {}; }
};

}  // namespace

Clock& SystemClock() {
  static RealClock clock;
  return clock;
}

}  // namespace marigold
