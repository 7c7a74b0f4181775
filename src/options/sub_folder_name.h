// The name of the dated sub-folder a run can create inside a task's destination. Names are made
// from Unicode date patterns ("MM-dd-yyyy", "EEEE", text in single quotes kept as it is) in the
// user's locale and time zone; the clock, the locale, the zone and the start-up volume's name can
// be fixed, so that a name is the same wherever it is computed.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "util/plist_value.h"

namespace marigold {

struct SessionSwitches;

// What settCreateDestFolderNameKind selects.
enum SubFolderNameKind : std::int64_t {
  kSubFolderNameCustom = 0,      // settCreateDestFolderCustomNameFormat, "kSrc" = the source's name
  kSubFolderNameSource = 1,      // the source folder's name, no date
  kSubFolderNameWeekday = 2,     // "EEEE"
  kSubFolderNameShortWeekday = 3,  // "EEE"
  kSubFolderNameMonth = 4,       // "MMMM"
  kSubFolderNameShortMonth = 5,  // "MMM"
  kSubFolderNameFirstFormat = 1000,  // 1000 and above: one of SubFolderDateFormats()
};

// The date formats the name pop-up offers below its fixed items; the item tagged 1000 + i has
// the i-th format as its title. None holds "/" or ":", which a folder name cannot show as such.
const std::vector<std::string>& SubFolderDateFormats();
// The format of the pop-up item tagged `tag`; nothing when no item has that tag.
std::optional<std::string> SubFolderDateFormat(std::int64_t tag);

// Where the naming takes "now", the locale, the time zone and the start-up volume's name from.
// Each left empty means the user's own.
struct SubFolderNaming {
  std::optional<PlistDate> now;
  std::string localeName;  // "en_US", "fr_FR", ...
  std::string timeZoneId;  // "Europe/Paris", ...
  std::function<std::string()> startupVolumeName;  // default: the root volume's label or host name

  PlistDate Now() const;
  // `pattern` applied to now; "" when the pattern is not valid.
  std::string Format(const std::string& pattern) const;
  std::string StartupVolumeName() const;
};

// The name of the sub-folder for the session at `sessionIndex` of `document` (which may be null:
// then the session is unknown). "" when `status` is off or the custom format is missing; nothing
// for kinds 6 to 999 and for tags without a format. Without `source`, the source is "(All)" for
// the "All Sessions" entry, "(Multi)" for a session running its multiple list, else the session's
// topFolder; "/" is named after the start-up volume, and an empty name reads "-". Without
// `format`, the session's custom format is used. Safe on any thread.
std::optional<std::string> GetDestSubFolderName(const PlistDict* document, std::int64_t sessionIndex, bool status,
                                                const std::optional<std::string>& source, std::int64_t nameKind,
                                                const std::optional<std::string>& format,
                                                const SubFolderNaming& naming = {});

// The sub-folder name of the task whose source is `source`, from the switches of the session at
// `sessionIndex` (what a run asks before each task).
std::optional<std::string> DestSubFolderNameForTask(const SessionSwitches& switches, std::int64_t sessionIndex,
                                                    const std::string& source, const SubFolderNaming& naming = {});

}  // namespace marigold
