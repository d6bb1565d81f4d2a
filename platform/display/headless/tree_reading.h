// tree_reading.h - finds the items of a tree view, except those that the user can't see because an item above them is
// collapsed.
//
// The path of an item consists of the texts of its ancestors, from the top item down, and its own text. Backslashes
// separate the texts.
#pragma once

#include "tree_control/tree_display.h"

#include "ce/types.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace platform::headless {

// Returns the visible tree view of a window, or null if the window has none.
HWND findTree(HWND top);

// Returns the first item with this path, with regard to case.
std::optional<window::TreeItemState> findTreeItem(HWND tree, std::u16string_view path);

// Returns a line for each visible item, such as "Files [3]". The number is that of the item's picture. The line is
// indented by two blanks for each ancestor of the item.
std::vector<std::u16string> linesOfTree(HWND tree);

}  // namespace platform::headless
