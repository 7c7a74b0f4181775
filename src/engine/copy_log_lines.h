// The words and lines the copy executor writes into the detailed log and its error messages.
// Every word is looked up once, when the executor is made, so a long run does not look the same
// text up for every item.
#pragma once

#include <string>
#include <string_view>

#include "platform/fs_result.h"

namespace marigold {

// The localised words of the detailed-log lines.
struct CopyLogWords {
  std::string createdFolder, trashedFolder, deletedFolder, copiedFile, to, replacedFile,
      withTheMostRecentFile, deletedFile, trashedFile;

  // Looks every word up with GLS.
  static CopyLogWords Localised();
};

// `path` between double quotes.
std::string Quoted(std::string_view path);

// A success line: the word, a blank and the quoted path; for copies and replacements a line
// break, the second word, a blank and the other quoted path. No final line break.
std::string SuccessLine(std::string_view word, std::string_view path, std::string_view secondWord = {},
                        std::string_view otherPath = {});

// "Error:" and the system's description of the failure, or "Error:" and `fallback` when there is
// none. A source that changed while it was read, a stop and a refused trash have words of their own.
std::string FailureDescription(const FsError& error, std::string_view fallback);

}  // namespace marigold
