// The preview on a terminal. Every item of every task is printed on one numbered line (number,
// action, path inside the task's folders); the person then types "off N", "on N" or "flip N"
// and sees the changed lines and the tallies after each change, and ends with "go" (or an
// empty line) to copy or "stop" to end the run. The rules are the preview editor's.
#pragma once

#include <cstdio>
#include <string>
#include <vector>

#include "cli/terminal_prompts.h"
#include "engine/preview_editor.h"

namespace marigold {

class TerminalPreview {
 public:
  // `editor`, `prompts` and `out` must outlive the preview.
  TerminalPreview(PreviewEditor& editor, TerminalPrompts& prompts, std::FILE* out);

  // Prints the items; when `interactive`, takes commands until "go" (true) or "stop" or the end
  // of input (false). Unattended, it only prints and returns true.
  bool Run(bool interactive);

 private:
  struct Row {
    FileSystemItem* item;
    std::string path;  // inside the task's folders, printable
  };

  void AddRows(FileSystemItem& item, const std::string& path);
  void PrintRow(std::size_t index);
  void PrintTallies();
  // Carries out "off", "on" or "flip" on row `index`; prints what changed.
  void Change(const std::string& verb, std::size_t index);

  PreviewEditor& mEditor;
  TerminalPrompts& mPrompts;
  std::FILE* mOut;
  std::vector<Row> mRows;
  std::vector<std::size_t> mTaskStarts;  // the first row of each task
};

}  // namespace marigold
