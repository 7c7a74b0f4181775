#include "options/sub_folder_name.h"

#include "model/document_model.h"
#include "options/session_switches.h"
#include "platform/item_attributes.h"
#include "platform/linux_file_system.h"
#include "util/quillon_additions.h"

namespace marigold {

namespace {

constexpr std::string_view kSourceMarker = "kSrc";

std::string ReplaceAll(std::string text, std::string_view what, const std::string& with) {
  for (std::size_t at = text.find(what); at != std::string::npos; at = text.find(what, at + with.size()))
    text.replace(at, what.size(), with);
  return text;
}

// The source when none is given: what the current entry of the document stands for.
std::string DefaultSource(const PlistDict* document, std::int64_t sessionIndex) {
  if (document == nullptr) return "";
  if (IsAllSessions(*document, sessionIndex)) return "(All)";
  const PlistDict* session = GetSessionDict(*document, sessionIndex);
  if (session == nullptr) return "";
  const PlistDict* multi = session->GetDict("multiDict");
  if (multi != nullptr && multi->IsFlagOn("multiOn")) return "(Multi)";
  const PlistDict* console = session->GetDict("consoleDict");
  return console ? console->GetString("topFolder") : "";
}

std::optional<std::string> SessionFormat(const PlistDict* document, std::int64_t sessionIndex) {
  const PlistDict* session = document ? GetSessionDict(*document, sessionIndex) : nullptr;
  const PlistDict* settings = session ? session->GetDict("settingsDict") : nullptr;
  if (settings == nullptr || !settings->Contains("settCreateDestFolderCustomNameFormat")) return std::nullopt;
  return settings->GetString("settCreateDestFolderCustomNameFormat");
}

std::string SourceName(const std::string& source, const SubFolderNaming& naming) {
  std::string name = source == "/" ? naming.StartupVolumeName() : std::string(LastPathComponent(source));
  return name.empty() ? "-" : name;
}

}  // namespace

const std::vector<std::string>& SubFolderDateFormats() {
  static const std::vector<std::string> kFormats = {
      "yyyy-MM-dd",      "yyyy-MM-dd HH-mm", "yyyy-MM-dd HH-mm-ss", "yyyyMMdd", "yyyyMMdd-HHmmss",
      "dd-MM-yyyy",      "MM-dd-yyyy",       "yyyy-MM",             "yyyy",     "EEEE dd MMMM yyyy",
  };
  return kFormats;
}

std::optional<std::string> SubFolderDateFormat(std::int64_t tag) {
  const auto& formats = SubFolderDateFormats();
  if (tag < kSubFolderNameFirstFormat || tag - kSubFolderNameFirstFormat >= static_cast<std::int64_t>(formats.size()))
    return std::nullopt;
  return formats[static_cast<std::size_t>(tag - kSubFolderNameFirstFormat)];
}

PlistDate SubFolderNaming::Now() const { return now ? *now : marigold::Now(); }

std::string SubFolderNaming::Format(const std::string& pattern) const {
  return StringWithFormat(Now(), pattern, localeName, timeZoneId);
}

std::string SubFolderNaming::StartupVolumeName() const {
  if (startupVolumeName) return startupVolumeName();
  LinuxFileSystem fs;
  auto volume = fs.GetVolume("/");
  return volume ? volume.Value().name : "";
}

std::optional<std::string> GetDestSubFolderName(const PlistDict* document, std::int64_t sessionIndex, bool status,
                                                const std::optional<std::string>& source, std::int64_t nameKind,
                                                const std::optional<std::string>& format,
                                                const SubFolderNaming& naming) {
  if (!status) return std::string();
  const std::optional<std::string> pattern = format ? format : SessionFormat(document, sessionIndex);
  const std::string sourcePath = source ? *source : DefaultSource(document, sessionIndex);
  switch (nameKind) {
    case kSubFolderNameCustom:
      if (!pattern) return std::string();
      // Quoted, the name is copied by the date formatter as it is rather than read as fields.
      return naming.Format(ReplaceAll(*pattern, kSourceMarker, "'" + SourceName(sourcePath, naming) + "'"));
    case kSubFolderNameSource: return SourceName(sourcePath, naming);
    case kSubFolderNameWeekday: return naming.Format("EEEE");
    case kSubFolderNameShortWeekday: return naming.Format("EEE");
    case kSubFolderNameMonth: return naming.Format("MMMM");
    case kSubFolderNameShortMonth: return naming.Format("MMM");
    default: break;
  }
  if (std::optional<std::string> dateFormat = SubFolderDateFormat(nameKind)) return naming.Format(*dateFormat);
  return std::nullopt;
}

std::optional<std::string> DestSubFolderNameForTask(const SessionSwitches& s, std::int64_t sessionIndex,
                                                    const std::string& source, const SubFolderNaming& naming) {
  return GetDestSubFolderName(nullptr, sessionIndex, s.gCreateDestFolder, source, s.gCreateDestFolderNameKind,
                              s.gCreateDestFolderCustomNameFormat, naming);
}

}  // namespace marigold
