// tree_state.h - what of a tree view passes between the core and a display; tree_display.h has the calls.
#pragma once

#include "ce/types.h"

#include <cstddef>
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

// Where in its row an item was hit.
enum class TreePart {
    Label,
    Icon,
    Button,
    Right,   // of the label
    Indent,  // left of the button
};

}  // namespace platform::window
