#include "platform/system_power.h"

#include <spawn.h>
#include <sys/wait.h>

extern char** environ;

namespace marigold {

bool SystemPower::PowerOff() {
  char program[] = "systemctl";
  char verb[] = "poweroff";
  char* argv[] = {program, verb, nullptr};
  pid_t pid = 0;
  if (::posix_spawnp(&pid, program, nullptr, nullptr, argv, environ) != 0) return false;
  int status = 0;
  if (::waitpid(pid, &status, 0) < 0) return false;
  return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

SystemPower& SystemPowerControl() {
  static SystemPower power;
  return power;
}

}  // namespace marigold
