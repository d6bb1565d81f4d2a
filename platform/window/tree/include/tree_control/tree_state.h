// tree_state.h - structures that describe a tree view and its changes. The functions of tree_display.h use them.
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
    int image = 0;           // which picture the item shows now (see TreePictures)
    bool hasButton = false;  // the item can be expanded, even if it has no children yet
    bool hasChildren = false;
    bool expanded = false;
    bool selected = false;
    int level = 0;  // 0: a top item
};

// Adjacent siblings that were inserted.
struct TreeRange {
    HTREEITEM parent = nullptr;  // null: top items
    HTREEITEM after = nullptr;   // the sibling before `items`; null: `items` begins with the first child
    std::vector<HTREEITEM> items;
};

// Adjacent siblings that were removed, with their descendants.
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
    std::vector<TreeRange> inserted;   // apply them in this order; parents come before their children
    std::vector<HTREEITEM> updated;    // with a new text, image or button; each item once, no item of `inserted`
    std::vector<TreeFold> folded;      // expanded or collapsed items, also items of `inserted`
    HTREEITEM selected = nullptr;      // the selected item; null: none
    HTREEITEM toShow = nullptr;        // the item to scroll into view; null: don't scroll
};

// The bitmap in the resources from which the tree's pictures are cut, and the size of one picture in pixels of the
// bitmap.
struct TreePictures {
    WORD bitmapId = 0;  // 0: the tree has none
    int width = 0;
    int height = 0;
};

// The part of an item's row that was clicked.
enum class TreePart {
    Label,
    Icon,
    Button,
    Right,   // of the label
    Indent,  // left of the button
};

}  // namespace platform::window
