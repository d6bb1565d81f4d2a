// tree_display.h - what a display asks of a tree view and posts to it; display.h has the rest.
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

#include "ce/types.h"

#include <cstddef>
#include <span>
#include <string>
#include <vector>

namespace platform::window {

struct TreeItemState {
    HTREEITEM item = nullptr;
    HTREEITEM parent = nullptr;  // null: a top item
    std::u16string text;
    int image = 0;           // cell of the tree's pictures, as it shows now
    bool hasButton = false;  // it can be expanded, whether or not it has children yet
    bool hasChildren = false;
    bool expanded = false;
    bool selected = false;
    int level = 0;  // 0: a top item
};

// Siblings that stand side by side.
struct TreeRange {
    HTREEITEM parent = nullptr;  // null: top items
    HTREEITEM after = nullptr;   // the sibling above the first one; null: it is the first child
    std::vector<HTREEITEM> items;
};

// Siblings that stood side by side, with all that lay below them.
struct TreeRemoval {
    HTREEITEM parent = nullptr;
    HTREEITEM first = nullptr;
    std::size_t count = 0;
};

struct TreeFold {
    HTREEITEM item = nullptr;
    bool expanded = false;
};

struct TreeChanges {
    std::vector<TreeRemoval> removed;  // to be applied one after the other
    std::vector<TreeRange> inserted;   // likewise; a parent comes before its children
    std::vector<HTREEITEM> updated;    // text, image or button; each once, none of the inserted ones
    std::vector<TreeFold> folded;      // expanded or collapsed, inserted ones too
    HTREEITEM selected = nullptr;      // as it is now; null: nothing
    HTREEITEM toShow = nullptr;        // to be scrolled into view; null: stay
};

// The bitmap of the resources that the pictures are cut from, and a cell's size in its pixels.
struct TreePictures {
    WORD bitmapId = 0;  // 0: the tree has none
    int width = 0;
    int height = 0;
};

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

// Where in its row an item was hit.
enum class TreePart {
    Label,
    Icon,
    Button,
    Right,   // of the label
    Indent,  // left of the button
};

// Raw input, dropped and queued by the rules of display.h. A null item is the empty space below the rows. A double
// click is a postTreeClick for the first and a postTreeDoubleClick for the second click.
bool postTreeClick(HWND tree, HTREEITEM item, TreePart part);
bool postTreeDoubleClick(HWND tree, HTREEITEM item, TreePart part);

}  // namespace platform::window
