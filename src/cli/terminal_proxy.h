// The run's proxy on a terminal. Progress goes to standard error as one line redrawn in place
// (items still to do, bytes of the file being copied) when standard error is a terminal. An
// interactive run asks its questions on the terminal; an unattended one asks nothing and takes
// the default answers. Every method may be called from the worker or the progress refresher, so
// all output is serialised.
#pragma once

#include <cstdint>
#include <cstdio>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "cli/terminal_prompts.h"
#include "engine/appkit_proxy.h"

namespace marigold {

class TerminalProxy : public AppkitProxy {
 public:
  // `interactive`: questions are asked on `in`. `showProgress`: the progress line is drawn on
  // `out` (only sensible when `out` is a terminal).
  TerminalProxy(bool interactive, bool showProgress, std::FILE* in = stdin, std::FILE* out = stderr);

  int Alert(const AlertRequest& request) override;
  int AskReplace(const ReplaceRequest& request) override;
  bool ShowPreview(PreviewEditor& editor) override;
  void RunEnded() override;
  void UpdateItemsToDo(std::int64_t itemsToDo, std::int64_t itemsTotal) override;
  void UpdateBytesCopied(std::uint64_t copied, std::uint64_t total) override;
  void Beep() override;

  // Asks a yes/no question before a run ("[y/N]"): true only for a typed "y" or "yes"; an
  // empty line or the end of input is "no". An unattended proxy asks nothing and says yes.
  bool ConfirmRun(const std::string& title, const std::string& question) override;

  // Prints one error of the run on its own line ("marigold: " and the message).
  void ReportError(const std::string& message) override;

 private:
  // All with mMutex held.
  void ClearProgress();
  void DrawProgress();
  std::optional<std::string> ReadLine() { return mPrompts.ReadLine(); }
  void PrintLines(const std::string& text);
  // One answer of the replace prompt: its key, title and what it does.
  void PrintChoice(const char* key, const std::string& title, const std::string& tooltip, bool isDefault);

  bool mInteractive;
  bool mShowProgress;
  std::FILE* mOut;
  TerminalPrompts mPrompts;  // alerts and typed answers, shared with the document commands
  std::mutex mMutex;
  bool mProgressShown = false;
  std::int64_t mItemsToDo = -1;
  std::int64_t mItemsTotal = 0;
  std::uint64_t mBytesCopied = 0;
  std::uint64_t mBytesTotal = 0;
};

// "512 B", "3.4 KiB", "1.0 GiB".
std::string ByteCountText(std::uint64_t bytes);

}  // namespace marigold
