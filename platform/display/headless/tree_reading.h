// tree_reading.h - what a user reads in a tree view.
//
// An item is named by the texts from a top item on, joined by backslashes. Only what is in sight is found: what
// lies below a collapsed item isn't.
#pragma once

#include "tree_control/tree_display.h"

#include "ce/types.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace platform::headless {

// The visible tree view of a window; null if it has none.
[[nodiscard]] HWND findTree(HWND top);

// Case counts; of several the first.
[[nodiscard]] std::optional<window::TreeItemState> findTreeItem(HWND tree, std::u16string_view path);

// "Files [3]" and so on, two blanks for each level: each item in sight with its image.
[[nodiscard]] std::vector<std::u16string> linesOfTree(HWND tree);

}  // namespace platform::headless
