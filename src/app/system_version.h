// The minimum-system check and the system's description for the log: the kernel must offer statx
// (4.11 or later), and the distribution is named from os-release.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace marigold {

struct SystemVersion {
  long major = 0;
  long minor = 0;
  long patch = 0;
};

// An ordinary ordering (major, then minor, then patch): true when `running` is not below `minimum`.
bool IsVersionAtLeast(const SystemVersion& running, const SystemVersion& minimum);

// Parses the leading "major.minor[.patch]" of a release string such as "6.1.0-18-amd64".
// Nothing when it does not start with a number.
std::optional<SystemVersion> ParseReleaseVersion(std::string_view release);

// The kernel the program needs: 4.11, the first with statx.
inline constexpr SystemVersion kMinimumKernel{4, 11, 0};

struct SystemCheck {
  bool ok = false;
  SystemVersion kernel;        // what uname reports
  std::string kernelRelease;   // uname's release text
  bool hasStatx = false;       // statx answered (not ENOSYS)
};

// Reads uname and probes statx on "/". ok when the kernel is at least kMinimumKernel and statx
// is available.
SystemCheck CheckSystem();

struct OsRelease {
  std::string prettyName;  // PRETTY_NAME, "" when absent
  std::string versionId;   // VERSION_ID, "" when absent
};

// Parses os-release text (KEY=value lines, values optionally quoted with shell escapes).
OsRelease ParseOsRelease(std::string_view text);
// Reads `path` (by default /etc/os-release, falling back to /usr/lib/os-release); empty fields
// when neither can be read.
OsRelease ReadOsRelease(const std::string& path = "");

// The alert text shown when the system is too old: the localised lead-in, the minimum
// "%ld.%ld.%ld" and the localised "Cannot run.".
std::string MinimumSystemMessage(const SystemVersion& minimum);

}  // namespace marigold
