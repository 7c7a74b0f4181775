#include "cli/terminal_preview.h"

#include <charconv>
#include <sstream>

#include "engine/copy_mode.h"
#include "engine/tree_text.h"
#include "util/strings_table.h"

namespace marigold {
namespace {

// "copy A to B", or "off (copy A to B)" for an action switched off, padded so paths line up.
std::string ActionText(int mode) {
  std::string text = mode < 0 ? "off (" + std::string(CopyModeWords(-mode)) + ")" : std::string(CopyModeWords(mode));
  if (text.size() < 22) text.resize(22, ' ');
  return text;
}

// The row number typed after a verb (1-based), or 0 when there is none or it is not a number.
std::size_t RowNumber(const std::string& word) {
  std::size_t number = 0;
  const auto [end, error] = std::from_chars(word.data(), word.data() + word.size(), number);
  return error == std::errc() && end == word.data() + word.size() ? number : 0;
}

}  // namespace

TerminalPreview::TerminalPreview(PreviewEditor& editor, TerminalPrompts& prompts, std::FILE* out)
    : mEditor(editor), mPrompts(prompts), mOut(out) {}

void TerminalPreview::AddRows(FileSystemItem& item, const std::string& path) {
  const int count = item.numberOfChildren();
  for (int i = 0; i < count; ++i) {
    FileSystemItem& child = item.childAtIndex(static_cast<std::size_t>(i));
    std::string childPath = path + PrintableName(child.relativeDict().name);
    if (child.numberOfChildren() != FileSystemItem::kLeaf) childPath += '/';
    mRows.push_back({&child, childPath});
    AddRows(child, childPath);
  }
}

void TerminalPreview::PrintRow(std::size_t index) {
  const Row& row = mRows[index];
  std::fprintf(mOut, "%5zu  %s  %s\n", index + 1, ActionText(row.item->copyMode()).c_str(), row.path.c_str());
}

void TerminalPreview::PrintTallies() {
  std::string line;
  for (const PreviewTally& tally : PreviewTallies(mEditor.tallies())) {
    if (!line.empty()) line += ", ";
    line += tally.label + " " + std::to_string(tally.value);
  }
  std::fprintf(mOut, "%s\n", line.c_str());
}

void TerminalPreview::Change(const std::string& verb, std::size_t index) {
  FileSystemItem& item = *mRows[index].item;
  std::vector<int> before;
  before.reserve(mRows.size());
  for (const Row& row : mRows) before.push_back(row.item->copyMode());

  if (verb == "flip") {
    if (!mEditor.ChangeCopyModeDirection(item)) {
      std::fprintf(mOut, "%s\n", GLS("Only a replacement in a synchronisation can change its direction.").c_str());
      return;
    }
  } else if ((verb == "off") == (item.copyMode() < 0)) {
    std::fprintf(mOut, "%s\n", GLS(verb == "off" ? "That item is already off." : "That item is already on.").c_str());
    return;
  } else {
    mEditor.SwitchTheItem(item);
  }
  for (std::size_t i = 0; i < mRows.size(); ++i) {
    if (mRows[i].item->copyMode() != before[i]) PrintRow(i);
  }
  PrintTallies();
}

bool TerminalPreview::Run(bool interactive) {
  std::fprintf(mOut, "%s\n", mEditor.windowTitle().c_str());
  mRows.clear();
  mTaskStarts.clear();
  for (std::size_t t = 0; t < mEditor.totRootItems(); ++t) {
    mTaskStarts.push_back(mRows.size());
    AddRows(mEditor.rootItem(t), "");
  }
  const auto printAll = [&] {
    for (std::size_t t = 0, row = 0; t < mTaskStarts.size(); ++t) {
      std::fprintf(mOut, "%s\n", TaskTreeHeading(mEditor.rootItem(t).firstNodeItem()).c_str());
      const std::size_t end = t + 1 < mTaskStarts.size() ? mTaskStarts[t + 1] : mRows.size();
      for (; row < end; ++row) PrintRow(row);
    }
  };
  printAll();
  if (!interactive) return true;
  PrintTallies();
  const std::string help = GLS("Type \"off N\" or \"on N\" to switch item N, \"flip N\" to reverse a replacement, "
                               "\"list\" to show the items, \"go\" (or an empty line) to copy, \"stop\" to end the run.");
  for (;;) {
    std::fputs("go, stop, off N, on N, flip N, list> ", mOut);
    std::fflush(mOut);
    const std::optional<std::string> line = mPrompts.ReadLine();
    // Nobody left to answer: nothing is copied that nobody agreed to.
    if (!line) return false;
    std::istringstream words(*line);
    std::string verb, number, extra;
    words >> verb >> number >> extra;
    if (!extra.empty()) {
      std::fprintf(mOut, "%s\n", help.c_str());
      continue;
    }
    const std::size_t index = RowNumber(number);
    if (number.empty() && (verb.empty() || verb == "go")) return true;
    if (number.empty() && verb == "stop") return false;
    if (number.empty() && verb == "list") {
      printAll();
    } else if ((verb == "off" || verb == "on" || verb == "flip") && index >= 1 && index <= mRows.size()) {
      Change(verb, index - 1);
    } else {
      std::fprintf(mOut, "%s\n", help.c_str());
    }
  }
}

}  // namespace marigold
