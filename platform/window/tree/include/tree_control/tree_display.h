// tree_display.h - what a display asks of a tree view and posts to it; window/display.h has the rest.
//
// A tree of 100,000 items reaches a display as a few ranges of handles. What an item looks like is asked for where
// it shows, so a display needs no copy of a text that nobody scrolls to.
//
// changed(tree, Change::Tree) comes at most once until takeTreeChanges is called. The display then brings its mirror of
// the tree up to date in this order: removed, inserted, updated, folded, selected. A mirror begins empty; the first
// call for a tree delivers all items as inserted.
//
// The rows are the display's: it scrolls by itself, and Ctrl with an arrow key is its business. Every other key goes
// to postKey, typed letters to postText; clicks come back as the item and its part, not as a point. The core moves
// the selection and folds; the display follows and never does so by itself.
#pragma once

#include "tree_control/tree_state.h"

#include <span>

namespace platform::window {

// Each takes the core's lock for the length of the copy. Empty or false for a dead window or item.
// `fromTheStart`: the display's mirror is empty, whatever was taken before.
[[nodiscard]] TreeChanges takeTreeChanges(HWND tree, bool fromTheStart = false);
[[nodiscard]] bool readTreeItem(HWND tree, HTREEITEM item, TreeItemState& state);
// One for each handle that is alive, in the same order, under one lock.
[[nodiscard]] std::vector<TreeItemState> readTreeItems(HWND tree, std::span<const HTREEITEM> items);
[[nodiscard]] TreePictures treePictures(HWND tree);

// Without takeTreeChanges: for who only looks.
[[nodiscard]] HTREEITEM selectedTreeItem(HWND tree);
[[nodiscard]] std::vector<HTREEITEM> treeItemsBelow(HWND tree, HTREEITEM parent);  // children; null: the top items

// Raw input, dropped and queued by the rules of window/display.h. A null item is the empty space below the rows. A
// double click is a postTreeClick for the first and a postTreeDoubleClick for the second click.
bool postTreeClick(HWND tree, HTREEITEM item, TreePart part);
bool postTreeDoubleClick(HWND tree, HTREEITEM item, TreePart part);

}  // namespace platform::window
