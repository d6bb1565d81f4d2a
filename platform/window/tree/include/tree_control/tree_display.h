// tree_display.h - what a display reads from a tree view and posts to it; window/display.h has the rest.
//
// A display receives a tree of 100,000 items as a few ranges of handles. It reads texts and images only of the items
// that it shows.
//
// The core reports changed(tree, Change::Tree) once, and again only after takeTreeChanges. The display applies the
// changes to its mirror of the tree in this order: removed, inserted, updated, folded, selected. A mirror begins empty,
// and the first takeTreeChanges delivers all items as inserted.
//
// The display scrolls its rows by itself, also for Ctrl with an arrow key. It posts every other key with postKey, typed
// letters with postText, and clicks as the item and its part, not as a point. Only the core moves the selection,
// expands and collapses.
#pragma once

#include "tree_control/tree_state.h"

#include <span>

namespace platform::window {

// Each locks the core's mutex while it copies. Empty or false for a dead window or item.
// `fromTheStart`: delivers all items as inserted, whatever was taken before.
[[nodiscard]] TreeChanges takeTreeChanges(HWND tree, bool fromTheStart = false);
[[nodiscard]] bool readTreeItem(HWND tree, HTREEITEM item, TreeItemState& state);
// The items that are alive, in the given order, all as of one moment.
std::vector<TreeItemState> readTreeItems(HWND tree, std::span<const HTREEITEM> items);
TreePictures treePictures(HWND tree);

// This is for callers without a mirror.
std::vector<HTREEITEM> treeItemsBelow(HWND tree, HTREEITEM parent);  // the children; null: the top items

// Raw input, dropped and queued by the rules of window/display.h. A null item is the empty space below the rows. A
// double click is a postTreeClick for the first and a postTreeDoubleClick for the second click.
bool postTreeClick(HWND tree, HTREEITEM item, TreePart part);
bool postTreeDoubleClick(HWND tree, HTREEITEM item, TreePart part);
// A click on the item's label, and after it a command of the tree's top-level window or a key for the tree. Both are
// queued or neither is, so the program can't work between them and drop the second.
bool postTreeCommand(HWND tree, HTREEITEM item, WORD command);
bool postTreeKey(HWND tree, HTREEITEM item, WORD virtualKey);
// Has the program list anew what is expanded. The rows that are expanded stay so, as far as they are still there.
bool postTreeRelist(HWND tree);

}  // namespace platform::window
