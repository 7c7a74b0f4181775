#include "platform/system_log.h"

#include <syslog.h>

#include <mutex>

namespace marigold {
namespace {

class Syslog : public SystemLog {
 public:
  void Write(int priority, const std::string& line) override {
    std::call_once(mOpened, [] { ::openlog("marigold", LOG_PID, LOG_USER); });
    ::syslog(priority, "%s", line.c_str());
  }

 private:
  std::once_flag mOpened;
};

}  // namespace

SystemLog& SyslogSystemLog() {
  static Syslog log;
  return log;
}

}  // namespace marigold
