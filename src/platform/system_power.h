// Turning the computer off after a run, when the preferences ask for it. A seam, so that tests of
// the run's end never power the machine off.
#pragma once

namespace marigold {

class SystemPower {
 public:
  virtual ~SystemPower() = default;
  // Asks the system to power off (systemctl poweroff) and waits for the request to be taken.
  // False when it could not be asked.
  virtual bool PowerOff();
};

// The system's own.
SystemPower& SystemPowerControl();

}  // namespace marigold
