// Everything the run's worker needs from a person or a screen. Each call blocks the worker until
// it returns. The desktop program answers on its GUI thread, the terminal asks on the terminal
// (an unattended run asks nothing), and tests script the answers and record the calls. The
// engine decides; the proxy only shows and returns what was pressed.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "app/app_prompts.h"
#include "engine/scan_node.h"

namespace marigold {

// The values of one replace prompt; the wording is built from them by the prompt's controller.
struct ReplaceRequest {
  std::string source;
  std::string dest;
  std::optional<std::int64_t> lastBackupDate;  // Unix seconds; absent when not shown
  int copyMode = 0;
  int conflict = 0;  // 11, 12, 21, 22, 31, 41, 42, 51, 52
  bool isSync = false;
};

// Modal results of the replace prompt; negated when the user changed the direction.
inline constexpr int kReplaceResultReplace = 100;
inline constexpr int kReplaceResultStop = 98;
inline constexpr int kReplaceResultSkip = 1;

class PreviewEditor;

class AppkitProxy {
 public:
  virtual ~AppkitProxy() = default;

  // A modal alert; returns the index of the button pressed (0 = first, the default).
  virtual int Alert(const AlertRequest& request) = 0;
  // The replace prompt; returns its modal result (see the constants above).
  virtual int AskReplace(const ReplaceRequest& request) = 0;
  // The preview of the scan trees before anything is copied. Called on the worker thread, which
  // it blocks until the person continues (true) or stops (false). Every change goes through
  // `editor` (its trees, tallies and title belong to the run); a front end on another thread may
  // use the editor only while this call blocks the worker.
  virtual bool ShowPreview(PreviewEditor& editor) = 0;

  // Console updates; none of them may block for long.
  virtual void RunStarted() {}
  virtual void RunEnded() {}
  virtual void ShowMainFolders(const std::string& source, const std::string& dest) { (void)source; (void)dest; }
  virtual void SetTaskComment(const std::string& text) { (void)text; }
  // The progress bar turns indeterminate, visible and animated (while the index is written).
  virtual void ShowIndeterminateProgress() {}
  // Items still to do out of the total, at the console's refresh interval.
  virtual void UpdateItemsToDo(std::int64_t itemsToDo, std::int64_t itemsTotal) { (void)itemsToDo; (void)itemsTotal; }
  // Bytes of the file being copied.
  virtual void UpdateBytesCopied(std::uint64_t copied, std::uint64_t total) { (void)copied; (void)total; }
  virtual void Beep() {}
};

}  // namespace marigold
