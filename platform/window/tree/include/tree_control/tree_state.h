// tree_state.h - the structures of tree_display.h.
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

// Adjacent siblings.
struct TreeRange {
    HTREEITEM parent = nullptr;  // null: top items
    HTREEITEM after = nullptr;   // the sibling above the first one; null: it is the first child
    std::vector<HTREEITEM> items;
};

// Adjacent siblings that are gone, with their descendants.
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
    std::vector<TreeRemoval> removed;  // apply them in this order
    std::vector<TreeRange> inserted;   // likewise; parents before their children
    std::vector<HTREEITEM> updated;    // text, image or button; each once, none of the inserted ones
    std::vector<TreeFold> folded;      // expanded or collapsed, inserted ones too
    HTREEITEM selected = nullptr;      // now; null: no item
    HTREEITEM toShow = nullptr;        // scroll it into view; null: don't scroll
};

// The bitmap of the resources that the pictures are cut from, and a cell's size in its pixels.
struct TreePictures {
    WORD bitmapId = 0;  // 0: the tree has none
    int width = 0;
    int height = 0;
};

// The part of an item's row that was hit.
enum class TreePart {
    Label,
    Icon,
    Button,
    Right,   // of the label
    Indent,  // left of the button
};

}  // namespace platform::window
