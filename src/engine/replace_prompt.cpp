#include "engine/replace_prompt.h"

#include <initializer_list>

#include "engine/copy_mode.h"
#include "util/quillon_additions.h"
#include "util/strings_table.h"

namespace marigold {
namespace {

// Joins the localised lines with "\r"; a line given as already localised text is kept.
std::string Lines(std::initializer_list<std::string> lines) {
  std::string text;
  for (const std::string& line : lines) {
    if (!text.empty()) text.push_back('\r');
    text.append(line);
  }
  return text;
}

std::string SinceLastRun(const ReplaceRequest& request) {
  const std::string date = request.lastBackupDate ? PromptDateText(*request.lastBackupDate) : std::string();
  return GLS("Since the last Sync/Backup (") + date + ")";
}

void ReplaceButtons(ReplacePromptText& prompt, const char* skipTooltip) {
  prompt.replaceTitle = GLS("Replace");
  prompt.skipTitle = GLS("Skip");
  prompt.skipTooltip = GLS(skipTooltip);
}

void SourceReplacesDirection(ReplacePromptText& prompt, bool sourceReplaces) {
  prompt.directionImage = sourceReplaces ? "icnPreviewViolet" : "icnPreviewOrange";
  prompt.directionTooltip =
      GLS(sourceReplaces ? "The source is going to replace the destination" : "The destination is going to replace the source");
  prompt.replaceTooltip =
      GLS(sourceReplaces ? "Replace the destination file and continue" : "Replace the source file and continue");
}

void DeleteFileTexts(ReplacePromptText& prompt, const ReplaceRequest& request, const char* secondLine,
                     bool deleteDest) {
  prompt.title = GLS("Delete File");
  prompt.directionImage = "icnPreviewDelete";
  prompt.text = Lines({SinceLastRun(request), GLS(secondLine),
                       GLS(deleteDest ? "MG is going to delete the destination file."
                                      : "MG is going to delete the source file."),
                       GLS(deleteDest ? "Are you sure you want to delete the destination file anyway?"
                                      : "Are you sure you want to delete the source file anyway?")});
  prompt.directionTooltip =
      GLS(deleteDest ? "The destination file is going to be deleted" : "The source file is going to be deleted");
  prompt.showsSource = !deleteDest;
  prompt.showsDest = deleteDest;
}

}  // namespace

std::string PromptDateText(std::int64_t unixSeconds) {
  return StringWithFormat(DateFromUnixSeconds(static_cast<double>(unixSeconds)), "EEEE, MMMM dd, yyyy - HH:mm:ss");
}

std::string ModificationDateLine(std::optional<std::int64_t> unixSeconds) {
  return GLS("Modification Date: ") + (unixSeconds ? PromptDateText(*unixSeconds) : std::string("--"));
}

ReplacePromptText BuildReplacePrompt(const ReplaceRequest& request, bool directionChanged) {
  ReplacePromptText prompt;
  const bool deleteDest = request.copyMode == kCopyModeDeleteInB;
  switch (request.conflict) {
    case 11:
    case 12:
      prompt.title = GLS("Replace File");
      prompt.text = request.conflict == 11
                        ? Lines({SinceLastRun(request), GLS("both the following source and destination files have been modified."),
                                 GLS("The source file has the most recent modification date/time."),
                                 GLS("Are you sure you want the source replaces the destination anyway?")})
                        : Lines({GLS("The destination file has the most recent modification date/time."),
                                 GLS("Are you sure you want the source replaces the destination anyway?")});
      ReplaceButtons(prompt, "Skip these files and continue");
      SourceReplacesDirection(prompt, true);
      break;
    case 21:
    case 22:
      DeleteFileTexts(prompt, request,
                      request.conflict == 21
                          ? "the source file has been deleted and the destination file has been modified."
                          : "the source parent folder has been deleted, and the destination file has been added.",
                      true);
      prompt.replaceTitle = GLS("Delete");
      prompt.replaceTooltip = GLS("Delete the destination file and continue");
      prompt.skipTitle = GLS("Skip");
      prompt.skipTooltip = GLS("Skip this file and continue");
      break;
    case 31: {
      const bool sourceNewer = request.copyMode == kCopyModeReplaceAToB;
      prompt.title = GLS("Replace File");
      prompt.text = Lines({SinceLastRun(request), GLS("both the following source and destination files have been modified."),
                           GLS(sourceNewer ? "The source file has the most recent modification date/time."
                                           : "The destination file has the most recent modification date/time."),
                           GLS(sourceNewer ? "Are you sure you want the source replaces the destination anyway?"
                                           : "Are you sure you want the destination replaces the source anyway?")});
      ReplaceButtons(prompt, "Skip these files and continue");
      SourceReplacesDirection(prompt, sourceNewer != directionChanged);
      prompt.showsDirectionButton = true;
      prompt.canChangeDirection = true;
      break;
    }
    case 41:
    case 42: {
      const char* second =
          request.conflict == 41
              ? (deleteDest ? "the source file has been deleted and the destination file has been modified."
                            : "the source file has been modified and the destination file has been deleted.")
              : (deleteDest ? "the following destination file has been added, but the source folder where MG should "
                              "copy this file to, has been deleted."
                            : "the following source file has been added, but the destination folder where MG should "
                              "copy this file to, has been deleted.");
      DeleteFileTexts(prompt, request, second, deleteDest);
      prompt.replaceTitle = GLS("Delete");
      prompt.replaceTooltip = GLS(deleteDest ? "Delete the destination file" : "Delete the source file");
      prompt.skipTitle = GLS("Copy");
      if (request.conflict == 41) {
        prompt.skipTooltip =
            GLS(deleteDest ? "Copy the destination back to the source" : "Copy the source back to the destination");
      } else {
        prompt.skipTooltip = GLS(deleteDest ? "Recreate the source folder and copy the new destination file in it"
                                            : "Recreate the destination folder and copy the new source file in it");
      }
      break;
    }
    case 51:
    case 52:
      prompt.title = GLS("Replace folder");
      prompt.text = (request.conflict == 51 ? GLS("The source file and the destination folder have the same name.\r")
                                            : GLS("The source folder and the destination file have the same name.\r")) +
                    GLS("The file has the most recent date and it's going to replace the folder.\r") +
                    GLS("Are you sure you want to replace the folder by the file?");
      prompt.replaceTitle = GLS("Replace");
      prompt.skipTitle = GLS("Skip");
      prompt.directionImage = request.conflict == 51 ? "icnReplaceViolet" : "icnReplaceOrange";
      prompt.showsDirectionButton = true;
      break;
    default:
      prompt.title = GLS("Replace File");
      ReplaceButtons(prompt, "Skip these files and continue");
      break;
  }
  return prompt;
}

}  // namespace marigold
