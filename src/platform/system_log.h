// Diagnostics for the system log, one line each (identifier "marigold"). Start-up and the engine
// write through this seam so that tests can read what would have been logged.
#pragma once

#include <string>

namespace marigold {

class SystemLog {
 public:
  virtual ~SystemLog() = default;
  // `priority` is a syslog(3) level (LOG_ERR, LOG_WARNING, LOG_NOTICE, LOG_INFO). Any thread.
  virtual void Write(int priority, const std::string& line) = 0;
};

// syslog(3) under the identifier "marigold"; opened on first use.
SystemLog& SyslogSystemLog();

}  // namespace marigold
