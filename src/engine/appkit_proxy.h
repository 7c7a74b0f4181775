// Everything a run needs from a person or a screen. The desktop program answers on its GUI
// thread, the terminal asks on the terminal (an unattended run asks nothing), and tests script the
// answers and record the calls. The engine decides; the proxy only shows and returns what was
// pressed, and never reads the disk: every request carries what it shows.
//
// Threads: the run controller calls ConfirmRun on the thread that starts the run, before the
// worker exists. Every other call comes from the run's worker thread, except UpdateItemsToDo,
// which the console refresher also makes from its own timer thread. Calls marked "blocks" hold the
// worker until the person answers; all others must return at once (queue the update, draw later).
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "engine/scan_node.h"
#include "platform/item_attributes.h"
#include "util/alert_request.h"

namespace marigold {

// One side of a replace prompt, as the scan saw it.
struct ReplaceSide {
  bool exists = false;
  ItemKind kind = ItemKind::kUnknown;
  std::uint64_t size = 0;                      // bytes; 0 for a folder
  std::optional<std::int64_t> modified;        // Unix seconds
};

// The values of one replace prompt; the wording is built from them by BuildReplacePrompt.
struct ReplaceRequest {
  std::string source;
  std::string dest;
  std::optional<std::int64_t> lastBackupDate;  // Unix seconds; absent when not shown
  int copyMode = 0;
  int conflict = 0;  // 11, 12, 21, 22, 31, 41, 42, 51, 52
  bool isSync = false;
  ReplaceSide sideA;  // the item at `source`
  ReplaceSide sideB;  // the item at `dest`
};

// Modal results of the replace prompt; negated when the user changed the direction.
inline constexpr int kReplaceResultReplace = 100;
inline constexpr int kReplaceResultStop = 98;
inline constexpr int kReplaceResultSkip = 1;

class PreviewEditor;

class AppkitProxy {
 public:
  virtual ~AppkitProxy() = default;

  // Blocks. "Starting task:" and the question that names what the run will do; true to start.
  // Only a run started by the user with prefAskConfirmation on is confirmed.
  virtual bool ConfirmRun(const std::string& title, const std::string& question) {
    (void)title;
    (void)question;
    return true;
  }
  // Blocks. A modal alert; returns the index of the button pressed (0 = first, the default).
  virtual int Alert(const AlertRequest& request) = 0;
  // Blocks. The replace prompt; returns its modal result (see the constants above).
  virtual int AskReplace(const ReplaceRequest& request) = 0;
  // Blocks. The preview of the scan trees before anything is copied. Called on the worker thread, which
  // it blocks until the person continues (true) or stops (false). Every change goes through
  // `editor` (its trees, tallies and title belong to the run); a front end on another thread may
  // use the editor only while this call blocks the worker.
  virtual bool ShowPreview(PreviewEditor& editor) = 0;

  // Console updates: none of them blocks.
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
  // The message of each error the run records, as it is recorded.
  virtual void ReportError(const std::string& message) { (void)message; }
  virtual void Beep() {}
};

}  // namespace marigold
