#include "cli/terminal_proxy.h"

#include <cstdlib>

#include "app/startup.h"
#include "cli/terminal_preview.h"
#include "engine/replace_prompt.h"
#include "engine/tree_text.h"
#include "util/strings_table.h"

namespace marigold {
namespace {

constexpr int kBarWidth = 24;

// "Modification Date: ... (file, 12.0 KiB)" for one side of the replace prompt; "--" when missing.
std::string SideText(const ReplaceSide& side) {
  if (!side.exists) return ModificationDateLine(std::nullopt);
  if (side.kind == ItemKind::kFolder) return ModificationDateLine(side.modified) + " (" + GLS("folder") + ")";
  const std::string kind = side.kind == ItemKind::kSymlink ? GLS("link") : GLS("file");
  return ModificationDateLine(side.modified) + " (" + kind + ", " + ByteCountText(side.size) + ")";
}

}  // namespace

std::string ByteCountText(std::uint64_t bytes) {
  static const char* const kUnits[] = {"KiB", "MiB", "GiB", "TiB"};
  if (bytes < 1024) return std::to_string(bytes) + " B";
  double value = static_cast<double>(bytes) / 1024.0;
  int unit = 0;
  while (value >= 1024.0 && unit < 3) {
    value /= 1024.0;
    ++unit;
  }
  char buffer[32];
  std::snprintf(buffer, sizeof buffer, "%.1f %s", value, kUnits[unit]);
  return buffer;
}

TerminalProxy::TerminalProxy(bool interactive, bool showProgress, std::FILE* in, std::FILE* out)
    : mInteractive(interactive), mShowProgress(showProgress), mOut(out), mPrompts(interactive, in, out) {}

void TerminalProxy::ClearProgress() {
  if (!mProgressShown) return;
  std::fputs("\r\x1b[K", mOut);
  mProgressShown = false;
}

void TerminalProxy::DrawProgress() {
  if (!mShowProgress || mItemsToDo < 0) return;
  const std::int64_t total = mItemsTotal > 0 ? mItemsTotal : mItemsToDo;
  const std::int64_t done = total - mItemsToDo;
  const int filled = total > 0 ? static_cast<int>(kBarWidth * done / total) : kBarWidth;
  std::string line = "\r[" + std::string(static_cast<std::size_t>(filled), '#') +
                     std::string(static_cast<std::size_t>(kBarWidth - filled), '-') + "] " +
                     GLS("Items to do:") + " " + std::to_string(mItemsToDo);
  if (mBytesTotal > 0 && mBytesCopied < mBytesTotal) {
    line += "  " + ByteCountText(mBytesCopied) + " / " + ByteCountText(mBytesTotal);
  }
  line += "\x1b[K";
  std::fputs(line.c_str(), mOut);
  std::fflush(mOut);
  mProgressShown = true;
}

void TerminalProxy::PrintLines(const std::string& text) {
  ClearProgress();
  std::fprintf(mOut, "%s\n", TerminalText(text).c_str());
}

int TerminalProxy::Alert(const AlertRequest& request) {
  std::lock_guard<std::mutex> lock(mMutex);
  ClearProgress();
  const int answer = mPrompts.Alert(request);
  DrawProgress();
  return answer;
}

int TerminalProxy::AskReplace(const ReplaceRequest& request) {
  std::lock_guard<std::mutex> lock(mMutex);
  if (!mInteractive) return kReplaceResultSkip;
  ClearProgress();
  bool changed = false;
  for (;;) {
    const ReplacePromptText prompt = BuildReplacePrompt(request, changed);
    PrintLines(prompt.title);
    PrintLines(prompt.text);
    // Both items are named even when only one of them can be acted on; a missing one shows "--".
    PrintLines("  A: \"" + PrintableName(request.source) + "\"  " + SideText(request.sideA));
    PrintLines("  B: \"" + PrintableName(request.dest) + "\"  " + SideText(request.sideB));
    if (!prompt.directionTooltip.empty()) PrintLines("  (" + prompt.directionTooltip + ")");
    PrintChoice("r", prompt.replaceTitle, prompt.replaceTooltip, true);
    PrintChoice("s", prompt.skipTitle, prompt.skipTooltip, false);
    PrintChoice("t", GLS("Stop"), {}, false);
    if (prompt.canChangeDirection) PrintChoice("d", GLS("Change direction"), {}, false);
    std::fputs("> ", mOut);
    const std::optional<std::string> line = ReadLine();
    // Nobody left to answer: leave the items as they are.
    if (!line) return kReplaceResultSkip;
    const std::string& answer = *line;
    int result = 0;
    if (answer.empty() || answer == "r") {
      result = kReplaceResultReplace;
    } else if (answer == "s") {
      result = kReplaceResultSkip;
    } else if (answer == "t") {
      result = kReplaceResultStop;
    } else {
      if (answer == "d" && prompt.canChangeDirection) changed = !changed;
      continue;
    }
    DrawProgress();
    return changed ? -result : result;
  }
}

void TerminalProxy::PrintChoice(const char* key, const std::string& title, const std::string& tooltip,
                                bool isDefault) {
  std::string line = std::string("  ") + key + ") " + title;
  if (!tooltip.empty()) line += ": " + tooltip;
  if (isDefault) line += " (" + GLS("default") + ")";
  PrintLines(line);
}

bool TerminalProxy::ConfirmRun(const std::string& title, const std::string& question) {
  std::lock_guard<std::mutex> lock(mMutex);
  if (!mInteractive) return true;
  ClearProgress();
  std::fprintf(mOut, "%s\n%s [y/N] ", TerminalText(title).c_str(), TerminalText(question).c_str());
  const std::optional<std::string> line = ReadLine();
  return line && (*line == "y" || *line == "Y" || *line == "yes" || *line == "Yes");
}

bool TerminalProxy::ShowPreview(PreviewEditor& editor) {
  std::lock_guard<std::mutex> lock(mMutex);
  ClearProgress();
  return TerminalPreview(editor, mPrompts, mOut).Run(mInteractive);
}

void TerminalProxy::RunEnded() {
  std::lock_guard<std::mutex> lock(mMutex);
  ClearProgress();
  mItemsToDo = -1;
  std::fflush(mOut);
}

void TerminalProxy::UpdateItemsToDo(std::int64_t itemsToDo, std::int64_t itemsTotal) {
  std::lock_guard<std::mutex> lock(mMutex);
  mItemsToDo = itemsToDo;
  mItemsTotal = itemsTotal;
  DrawProgress();
}

void TerminalProxy::UpdateBytesCopied(std::uint64_t copied, std::uint64_t total) {
  std::lock_guard<std::mutex> lock(mMutex);
  mBytesCopied = copied;
  mBytesTotal = total;
  DrawProgress();
}

void TerminalProxy::Beep() {
  std::lock_guard<std::mutex> lock(mMutex);
  if (mShowProgress) std::fputc('\a', mOut);
}

void TerminalProxy::ReportError(const std::string& message) {
  std::lock_guard<std::mutex> lock(mMutex);
  PrintLines("marigold: " + message);
  DrawProgress();
}

}  // namespace marigold
