// The rules under the preview: which actions a click switches off or on, how a switch spreads to
// an item's children and ancestors, reversing a replacement, and the run tallies that follow
// every change. Every front end (the desktop window, the terminal) edits through this class, so
// they all behave alike; they only draw rows and pass clicks.
//
// Invariants kept across every edit: an item is counted in exactly one tally (the tally of its
// mode, or runSwitchedOff when its mode is negative); a folder is never deleted while something
// in it is kept; a switched-off item that the last exact run knew is in the task's list of
// exact-index additions, so the next exact run sees it as it stood before this run.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "engine/preview_item.h"
#include "engine/run_state.h"
#include "platform/file_system.h"

namespace marigold {

// Columns of the preview outline.
inline constexpr int kPreviewColumnSideA = 0;
inline constexpr int kPreviewColumnAction = 1;
inline constexpr int kPreviewColumnSideB = 2;

// Keys held during a click (bit flags).
inline constexpr unsigned kPreviewKeyControl = 1;
inline constexpr unsigned kPreviewKeyOption = 2;

// What the window does after a click.
struct PreviewClickResult {
  bool deselectAll = false;  // the click hit no row, or a column past the third
  bool beep = false;         // the click asked for something that cannot be done
  // Modes and tallies changed: reload the item with its children and the first row with its
  // children, show the tallies and select the clicked row.
  bool reload = false;
  std::string reveal;        // a path to show in the file browser
};

class PreviewEditor {
 public:
  // Edits `trees` (the run's task trees), `tallies` and `exactIndexAdditions` (one list per tree,
  // parallel to `trees`) in place; all of them belong to the run and must outlive the editor.
  // `fs` answers whether a path to reveal exists.
  PreviewEditor(std::vector<TaskTree>& trees, RunTallies& tallies,
                std::vector<std::vector<std::string>>& exactIndexAdditions, FileSystem& fs);

  // One top-level row per task tree, in run order.
  std::size_t totRootItems() const { return mRoots.size(); }
  FileSystemItem& rootItem(std::size_t index) { return *mRoots.at(index); }
  const RunTallies& tallies() const { return mTallies; }

  const std::string& windowTitle() const { return mWindowTitle; }
  void SetWindowTitle(std::string title) { mWindowTitle = std::move(title); }

  // A click on `item` (null: no row) in `column` with `keys` held. Column 1 switches the action
  // (Option: reverses it); Control on columns 0 and 2 reveals that side's item when it exists.
  PreviewClickResult ClickTheRow(FileSystemItem* item, int column, unsigned keys);
  // A plain click on the action: switches the item off when it is on, on when it is off, with
  // its children; a deletion switched off takes the folders being deleted around it along, and
  // anything switched on brings back the switched-off folders that hold it.
  void SwitchTheItem(FileSystemItem& item);
  // Reverses a replacement (mode 4 or 5) in a synchronisation. False (beep) for anything else,
  // a switched-off replacement included; nothing changes then.
  bool ChangeCopyModeDirection(FileSystemItem& item);
  // The next item (or, with `previous`, the one before) after `from` in outline order whose
  // action deletes or trashes it; `from` null starts at the first (last) row. Null when none.
  FileSystemItem* SearchNextOrPreviousItem(FileSystemItem* from, bool previous);

  // Switches `item` and every item below it on (`on`) or off. Items already so stay as they are.
  void changeCopyMode(FileSystemItem& item, bool on);
  // From `item` up: on = switch each switched-off ancestor back on; off = switch off each one
  // that is to be deleted. Stops at the first item that needs no change.
  void changeParent(FileSystemItem* item, bool on);
  // Keeps the task's exact-index additions in step with an item judged against the index:
  // `mode` (the item's mode before the change) below 1 removes the path, 1 and above appends it.
  void AddOrRemoveItemToExactIndex(const FileSystemItem& item, int mode);

 private:
  void ChangeNodeMode(ScanNode& node, std::size_t tree, const std::string& a, const std::string& b, bool on);
  // Switches one node; true when its mode changed.
  bool SwitchNode(ScanNode& node, std::size_t tree, const std::string& a, const std::string& b, bool on);
  void AddOrRemovePath(const ScanNode& node, std::size_t tree, const std::string& a, const std::string& b, int mode);
  FileSystemItem* Sibling(FileSystemItem& item, int step);
  FileSystemItem* NextInOutline(FileSystemItem& item);
  FileSystemItem* PreviousInOutline(FileSystemItem& item);
  FileSystemItem& LastDescendant(FileSystemItem& item);

  RunTallies& mTallies;
  std::vector<std::vector<std::string>>& mExactIndexAdditions;
  FileSystem& mFs;
  std::vector<std::unique_ptr<FileSystemItem>> mRoots;
  std::string mWindowTitle;
};

// The preview window's title: "Preview - Multiple Sessions" for a run of all sessions, else
// "Preview - " + "Exact " (an exact session) + "Sync" or "Backup".
std::string PreviewWindowTitle(bool allSessions, const SessionSwitches& session);

// The tallies the preview shows, in its order: existing, skipped, delete, copy A to B,
// copy B to A, attributes A to B, attributes B to A, total.
struct PreviewTally {
  std::string label;
  std::int64_t value = 0;
};
std::vector<PreviewTally> PreviewTallies(const RunTallies& tallies);

}  // namespace marigold
