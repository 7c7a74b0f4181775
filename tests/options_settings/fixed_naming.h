// Sub-folder naming on a fixed clock (Tuesday 5 March 2024, 14:07:09 UTC), locale and zone, with
// "System Disk" as the start-up volume.
#pragma once

#include "options/sub_folder_name.h"
#include "util/quillon_additions.h"

namespace marigold {

inline SubFolderNaming Fixed(std::string locale = "en_US", std::string zone = "UTC") {
  SubFolderNaming naming;
  naming.now = DateFromUnixSeconds(1709647629);
  naming.localeName = std::move(locale);
  naming.timeZoneId = std::move(zone);
  naming.startupVolumeName = [] { return std::string("System Disk"); };
  return naming;
}

}  // namespace marigold
