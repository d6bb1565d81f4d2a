// tree_reading.h - the items of a tree view that a user can see.
//
// The path of an item consists of the texts from the top item to it, separated by backslashes. Items below a collapsed
// item aren't found.
#pragma once

#include "tree_control/tree_display.h"

#include "ce/types.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace platform::headless {

// The visible tree view of a window; null if it has none.
HWND findTree(HWND top);

// The first item with this path, with regard to case.
std::optional<window::TreeItemState> findTreeItem(HWND tree, std::u16string_view path);

// Each visible item with its image, as in "Files [3]", indented by two blanks for each level.
std::vector<std::u16string> linesOfTree(HWND tree);

}  // namespace platform::headless
