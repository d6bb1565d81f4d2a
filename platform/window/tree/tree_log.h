// tree_log.h - what has changed in a tree since its display last asked.
//
// The log holds handles only, and one handle for a range of adjacent insertions, so it stays small however long the
// display takes. Until a display asks for the first time it holds nothing. Item::shown is true for items that the
// display has received.
#pragma once

#include "tree_control/tree_state.h"
#include "tree_items.h"

#include <vector>

namespace platform::window {

class TreeLog {
public:
    void inserted(TreeItems& items, ItemIndex index);
    // To be called before the item and its descendants are erased.
    void removing(TreeItems& items, ItemIndex index);
    void updated(TreeItems& items, ItemIndex index);
    void folded(TreeItems& items, ItemIndex index);
    void show(HTREEITEM item) { toShow_ = item; }

    // Gives all fields but `selected`, and empties the log.
    [[nodiscard]] TreeChanges take(TreeItems& items);
    // Makes the next take() deliver all items as inserted.
    void startOver(TreeItems& items);

private:
    void takeEverything(TreeItems& items, TreeChanges& changes);

    bool asked_ = false;
    std::vector<TreeRemoval> removed_;
    HTREEITEM afterRemoved_ = nullptr;  // the neighbours of the last removal, when it happened
    HTREEITEM beforeRemoved_ = nullptr;
    std::vector<HTREEITEM> inserted_;
    std::vector<HTREEITEM> updated_;
    std::vector<HTREEITEM> folded_;
    HTREEITEM toShow_ = nullptr;
};

}  // namespace platform::window
