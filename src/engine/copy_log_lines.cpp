#include "engine/copy_log_lines.h"

#include <cstring>

#include "util/strings_table.h"

namespace marigold {

CopyLogWords CopyLogWords::Localised() {
  CopyLogWords words;
  words.createdFolder = GLS("Created folder");
  words.trashedFolder = GLS("Trashed folder");
  words.deletedFolder = GLS("Deleted folder");
  words.copiedFile = GLS("Copied file");
  words.to = GLS("to:");
  words.replacedFile = GLS("Replaced file:");
  words.withTheMostRecentFile = GLS("with the most recent file:");
  words.deletedFile = GLS("Deleted file");
  words.trashedFile = GLS("Trashed file");
  return words;
}

std::string Quoted(std::string_view path) {
  std::string text;
  text.reserve(path.size() + 2);
  text.push_back('"');
  text.append(path);
  text.push_back('"');
  return text;
}

std::string SuccessLine(std::string_view word, std::string_view path, std::string_view secondWord,
                        std::string_view otherPath) {
  std::string line;
  line.reserve(word.size() + path.size() + secondWord.size() + otherPath.size() + 8);
  line.append(word).append(" ").append(Quoted(path));
  if (!secondWord.empty()) line.append("\r").append(secondWord).append(" ").append(Quoted(otherPath));
  return line;
}

std::string FailureDescription(const FsError& error, std::string_view fallback) {
  std::string reason;
  switch (error.problem) {
    case FsProblem::kSystem:
      if (error.code != 0) reason = std::strerror(error.code);
      break;
    case FsProblem::kSourceChanged:
      reason = GLS("The source item changed while it was being copied.");
      break;
    case FsProblem::kStopped:
      reason = GLS("The copy was stopped.");
      break;
    case FsProblem::kCannotTrash:
      reason = GLS("The item can't be moved to the trash");
      if (error.code != 0) reason += std::string(" (") + std::strerror(error.code) + ")";
      break;
  }
  if (reason.empty()) reason = fallback;
  return GLS("Error:") + " " + reason;
}

}  // namespace marigold
