#include "engine/are_you_sure.h"

#include "model/document_model.h"
#include "platform/item_attributes.h"
#include "util/strings_table.h"

namespace marigold {

std::string AreYouSureString(const PlistDict& document, std::int64_t sessionIndex, FileSystem& fs) {
  if (IsAllSessions(document, sessionIndex)) {
    return GLS("Are you sure you want to execute the tasks defined in all the sessions?");
  }
  static const PlistDict kEmpty;
  const PlistDict* session = GetSessionDict(document, sessionIndex);
  if (session == nullptr) session = &kEmpty;
  const PlistDict* settings = session->GetDict("settingsDict");
  const PlistDict* console = session->GetDict("consoleDict");
  const PlistDict* multi = session->GetDict("multiDict");
  const bool isSync = settings && settings->IsFlagOn("settTask");
  const bool isExact = settings && settings->IsFlagOn("settExact");

  std::string text = GLS("Are you sure you want to") + " " + GLS(isSync ? "synchronize" : "backup") + " " +
                     (isExact ? GLS("exactly ") : std::string());
  if (multi && multi->IsFlagOn("multiOn")) return text + GLS("from the multiple list?");

  const std::string source = console ? console->GetString("topFolder") : std::string();
  const std::string dest = console ? console->GetString("bottomFolder") : std::string();
  auto attributes = fs.GetAttributes(source);
  const std::string noun = GLS(attributes && attributes.Value().IsReallyFolder() ? "folder" : "file");
  const std::string link = "\" " + GLS(isSync ? "with the" : "to the") + " ";
  return text + GLS("the") + " " + noun + " \"" + std::string(LastPathComponent(source)) + link + noun + " \"" +
         std::string(LastPathComponent(dest)) + "\"?";
}

bool AsksConfirmation(const PlistDict& preferences) { return preferences.GetInt("prefAskConfirmation") != 0; }

}  // namespace marigold
