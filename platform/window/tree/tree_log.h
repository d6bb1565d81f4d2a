// tree_log.h - what has changed in a tree since its display last asked.
//
// Only handles are noted, and of side-by-side insertions one for all, so that a log stays small however long the
// display takes. While no display has ever asked, nothing is noted at all. `Item::shown` says that the display knows an
// item.
#pragma once

#include "tree_control/tree_state.h"
#include "tree_items.h"

#include <vector>

namespace platform::window {

class TreeLog {
public:
    void inserted(TreeItems& items, ItemIndex index);
    // Before it is erased, with all below it.
    void removing(TreeItems& items, ItemIndex index);
    void updated(TreeItems& items, ItemIndex index);
    void folded(TreeItems& items, ItemIndex index);
    void show(HTREEITEM item) { toShow_ = item; }

    // All but `selected`.
    [[nodiscard]] TreeChanges take(TreeItems& items);
    // The next take delivers all items anew.
    void startOver(TreeItems& items);

private:
    void takeEverything(TreeItems& items, TreeChanges& changes);

    bool asked_ = false;
    std::vector<TreeRemoval> removed_;
    HTREEITEM behindRemoved_ = nullptr;  // the neighbours of the last removal, when it happened
    HTREEITEM beforeRemoved_ = nullptr;
    std::vector<HTREEITEM> inserted_;
    std::vector<HTREEITEM> updated_;
    std::vector<HTREEITEM> folded_;
    HTREEITEM toShow_ = nullptr;
};

}  // namespace platform::window
