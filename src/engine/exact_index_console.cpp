#include "engine/exact_index_console.h"

#include <ctime>

#include "engine/exact_index_main.h"
#include "util/quillon_additions.h"
#include "util/strings_table.h"

namespace marigold {

std::optional<std::string> LastExactSyncLine(const std::string& source, const std::string& dest,
                                             const std::string& indexFolder) {
  if (source.empty() || dest.empty()) return std::nullopt;
  std::optional<FoundPairIndex> found = FindPairIndex(SystemFileSystem(), indexFolder, source, dest, false);
  if (!found || !found->file.lastExactSyncDate) return std::nullopt;
  const auto seconds = static_cast<std::time_t>(UnixSecondsFromDate(*found->file.lastExactSyncDate));
  std::tm local{};
  if (::localtime_r(&seconds, &local) == nullptr) return std::nullopt;
  const std::string format = GLS("\xE2\x80\xA2 Last Exact Sync: %b %d %Y, %H:%M:%S");
  char text[256];
  const std::size_t length = std::strftime(text, sizeof text, format.c_str(), &local);
  if (length == 0) return std::nullopt;
  return std::string(text, length);
}

std::optional<std::string> LastExactSyncLine(const PlistDict& session, const std::string& indexFolder) {
  const PlistDict* settings = session.GetDict("settingsDict");
  const PlistDict* console = session.GetDict("consoleDict");
  if (settings == nullptr || console == nullptr) return std::nullopt;
  if (!settings->IsFlagOn("settTask") || !settings->IsFlagOn("settExact")) return std::nullopt;
  return LastExactSyncLine(console->GetString("topFolder"), console->GetString("bottomFolder"), indexFolder);
}

}  // namespace marigold
