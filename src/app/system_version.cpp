#include "app/system_version.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/utsname.h>

#include <cerrno>
#include <cstdio>
#include <fstream>
#include <sstream>
#include <vector>

#include "util/strings_table.h"

namespace marigold {

bool IsVersionAtLeast(const SystemVersion& running, const SystemVersion& minimum) {
  if (running.major != minimum.major) return running.major > minimum.major;
  if (running.minor != minimum.minor) return running.minor > minimum.minor;
  return running.patch >= minimum.patch;
}

std::optional<SystemVersion> ParseReleaseVersion(std::string_view release) {
  long parts[3] = {0, 0, 0};
  std::size_t pos = 0;
  for (int i = 0; i < 3; ++i) {
    if (pos >= release.size() || release[pos] < '0' || release[pos] > '9') {
      if (i == 0) return std::nullopt;
      break;
    }
    long value = 0;
    while (pos < release.size() && release[pos] >= '0' && release[pos] <= '9') {
      if (value < 100000000) value = value * 10 + (release[pos] - '0');
      ++pos;
    }
    parts[i] = value;
    if (pos >= release.size() || release[pos] != '.') break;
    ++pos;
  }
  return SystemVersion{parts[0], parts[1], parts[2]};
}

SystemCheck CheckSystem() {
  SystemCheck check;
  utsname names{};
  if (::uname(&names) == 0) {
    check.kernelRelease = names.release;
    if (auto parsed = ParseReleaseVersion(check.kernelRelease)) check.kernel = *parsed;
  }
  struct statx probe {};
  errno = 0;
  check.hasStatx = ::statx(AT_FDCWD, "/", AT_SYMLINK_NOFOLLOW, STATX_BASIC_STATS, &probe) == 0 ||
                   errno != ENOSYS;
  check.ok = check.hasStatx && IsVersionAtLeast(check.kernel, kMinimumKernel);
  return check;
}

namespace {

std::string Unquote(std::string_view value) {
  if (value.size() >= 2 && (value.front() == '"' || value.front() == '\'') &&
      value.back() == value.front()) {
    char quote = value.front();
    std::string out;
    for (std::size_t i = 1; i + 1 < value.size(); ++i) {
      if (quote == '"' && value[i] == '\\' && i + 2 < value.size()) ++i;
      out.push_back(value[i]);
    }
    return out;
  }
  return std::string(value);
}

}  // namespace

OsRelease ParseOsRelease(std::string_view text) {
  OsRelease release;
  std::size_t start = 0;
  while (start < text.size()) {
    std::size_t end = text.find('\n', start);
    if (end == std::string_view::npos) end = text.size();
    std::string_view line = text.substr(start, end - start);
    start = end + 1;
    while (!line.empty() && (line.back() == '\r' || line.back() == ' ')) line.remove_suffix(1);
    auto equal = line.find('=');
    if (line.empty() || line.front() == '#' || equal == std::string_view::npos) continue;
    std::string_view key = line.substr(0, equal);
    std::string_view value = line.substr(equal + 1);
    if (key == "PRETTY_NAME") release.prettyName = Unquote(value);
    else if (key == "VERSION_ID") release.versionId = Unquote(value);
  }
  return release;
}

OsRelease ReadOsRelease(const std::string& path) {
  std::vector<std::string> candidates{path};
  if (path.empty()) candidates = {"/etc/os-release", "/usr/lib/os-release"};
  for (const std::string& candidate : candidates) {
    std::ifstream in(candidate, std::ios::binary);
    if (!in) continue;
    std::ostringstream text;
    text << in.rdbuf();
    return ParseOsRelease(text.str());
  }
  return {};
}

std::string MinimumSystemMessage(const SystemVersion& minimum) {
  char numbers[96];
  std::snprintf(numbers, sizeof numbers, "%ld.%ld.%ld", minimum.major, minimum.minor, minimum.patch);
  return GLS("The minimum OS X version required is ") + numbers + ". " + GLS("Cannot run.");
}

}  // namespace marigold
