// The multiple list's rules without widgets: which rows a run takes, the check made when the
// panel is left, and what a click, a chosen folder or a dropped folder does to the rows.
// A row is usable when its onOff is not 0 and both its source and destination are non-empty.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "util/plist_value.h"

namespace marigold {

// The usable rows of the session's multiDict, in row order (the executive list a run walks).
PlistArray ExecutiveMultiArray(const PlistDict& session);
// The number of usable rows of the session at `sessionIndex` of `document`; 0 for an index
// outside the session list or a list without rows.
std::int64_t CountMultiValid(const PlistDict& document, std::int64_t sessionIndex);

// Leaving the panel with `multiDict` (its multiOn is the box's state). When the box is ticked:
// the first usable row whose source equals its destination gives the localised alert text
// (the panel must stay open, nothing is changed); otherwise a list without a usable row gets
// its box unticked (multiOn 0). Nothing returned means the dictionary may be stored.
std::optional<std::string> CheckMultiPanel(PlistDict& multiDict);

// The table's columns, by position.
enum class MultiColumn { kOnOff = 0, kSource = 1, kDestination = 2, kDelete = 3 };
enum class MultiModifier { kNone, kControl, kOption };

// What the panel must do after a click, beyond the change already made to the rows.
struct MultiClick {
  enum class Action {
    kNone,        // outside the list or its columns: deselect every row
    kToggled,     // the row's onOff changed
    kDeleted,     // the row is gone; the list is one shorter
    kCleared,     // the path was cleared
    kRevealPath,  // show `path` in the file manager
    kChoosePath,  // open a chooser for one item (a folder allowed) titled `prompt`, starting at `path`
  };
  Action action = Action::kNone;
  std::string path;
  std::string prompt;
};

// A click on (row, column) of the list in `multiDict`. `home` is where a chooser starts when
// the row has no path that exists.
MultiClick EditMultiRow(PlistDict& multiDict, std::int64_t row, std::int64_t column, MultiModifier modifier,
                        const std::string& home);

// Called with each path the user puts in the list, so that the volume it lies on can be
// mounted for the run.
using AddToAutoMount = std::function<void(const std::string& path)>;

// The chooser opened by EditMultiRow returned `path` for (row, column): the path is stored,
// handed to `addToAutoMount`, and the box is ticked.
void ChooseMultiPath(PlistDict& multiDict, std::int64_t row, MultiColumn column, const std::string& path,
                     const AddToAutoMount& addToAutoMount);

// A folder dropped on (row, column): accepted only while the box is ticked and on the source or
// destination cell of an existing row. Stores the path and its display components. Returns
// whether the drop was taken.
bool DropOnMultiCell(PlistDict& multiDict, std::int64_t row, std::int64_t column, const std::string& path,
                     const std::vector<std::string>& displayComponents, const AddToAutoMount& addToAutoMount);

}  // namespace marigold
