// tree_display.h - lets a display read a tree view and post input to it. window/display.h explains what a display is,
// and has the rest of the interface.
//
// The window core passes even a tree of 100,000 items to the display as a few ranges of handles. The display reads
// texts and images only of the items that it shows.
//
// The window core calls changed(tree, Change::Tree) of the display for the first change. After that it makes no such
// call until the display has called takeTreeChanges. A display can keep a copy of the tree, the mirror, and apply the
// changes to the mirror in this order: removed, inserted, updated, folded, selected. At first the mirror is empty, and
// the first takeTreeChanges delivers all items as inserted.
//
// The display scrolls its rows by itself, also for Ctrl with an arrow key. It posts every other key with postKey, and
// typed letters with postText. It posts a click as an item and a part of the item's row, not as a point. Only the
// window core moves the selection and expands or collapses items.
#pragma once

#include "tree_control/tree_state.h"

#include <span>

namespace platform::window {

// The functions up to treeItemsBelow lock coreMutex. If the window or item doesn't exist any more, the result is empty
// or false. If `fromTheStart` is true, takeTreeChanges delivers all items as inserted, even if the display has taken
// them before.
[[nodiscard]] TreeChanges takeTreeChanges(HWND tree, bool fromTheStart = false);
[[nodiscard]] bool readTreeItem(HWND tree, HTREEITEM item, TreeItemState& state);
// Reads those of the `items` that still exist, in the given order and all at one moment.
std::vector<TreeItemState> readTreeItems(HWND tree, std::span<const HTREEITEM> items);
TreePictures treePictures(HWND tree);

// Returns the children of `parent`, or the top items if `parent` is null. A display that has a mirror doesn't need
// this function.
std::vector<HTREEITEM> treeItemsBelow(HWND tree, HTREEITEM parent);

// Functions for raw input, which is queued or dropped by the rules of window/display.h. A null item means the empty
// space below the rows. For a double click the display calls postTreeClick for the first click and postTreeDoubleClick
// for the second.
bool postTreeClick(HWND tree, HTREEITEM item, TreePart part);
bool postTreeDoubleClick(HWND tree, HTREEITEM item, TreePart part);
// These functions post a click on the item's label and a second input. postTreeCommand adds a command for the tree's
// top-level window, and postTreeKey adds a key for the tree. Both inputs are queued together. So the click can't make
// the program busy before the second input is queued. If the result is false, neither is queued.
bool postTreeCommand(HWND tree, HTREEITEM item, WORD command);
bool postTreeKey(HWND tree, HTREEITEM item, WORD virtualKey);
// Makes the program list the children of each expanded item again, unless the item is below a collapsed one. Afterwards
// each of these items is expanded again if it still exists and has a button.
bool postTreeRelist(HWND tree);

}  // namespace platform::window
