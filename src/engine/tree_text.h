// The scan trees as text, for a terminal: one line per item, indented by depth, with the item's
// decision in words. Names are printed so that every byte stays visible and one item stays on one
// line, whatever bytes the name holds.
#pragma once

#include <string>
#include <string_view>

#include "engine/scan_node.h"

namespace marigold {

// The name with "\" doubled, control characters as \n, \r, \t or \xHH, and bytes that are not
// valid UTF-8 as \xHH; valid UTF-8 text is kept as it is.
std::string PrintableName(std::string_view name);

// The task's heading, without a line end: Task 1 of session 1: "/src" -> "/dst"
std::string TaskTreeHeading(const TaskTree& tree);

// The task's heading line and its items, each line ending with "\n":
//   Task 1 of session 1: "/src" -> "/dst"
//     docs/  nothing to do
//       a.txt  copy A to B
std::string DescribeTaskTree(const TaskTree& tree);

}  // namespace marigold
