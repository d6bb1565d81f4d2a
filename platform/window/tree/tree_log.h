// tree_log.h - records the changes in a tree that the display hasn't taken yet.
//
// The log stores only handles, and usually only one handle for a range of adjacent inserted items. So the log stays
// small even if the display doesn't take the changes for a long time. Before the first take() the log records neither
// insertions nor removals. Item::shown is true for items that the display has received.
#pragma once

#include "tree_control/tree_state.h"
#include "tree_items.h"

#include <vector>

namespace platform::window {

class TreeLog {
public:
    void inserted(TreeItems& items, ItemIndex index);
    // Must be called before the item and its descendants are erased.
    void removing(TreeItems& items, ItemIndex index);
    void updated(TreeItems& items, ItemIndex index);
    void folded(TreeItems& items, ItemIndex index);
    void show(HTREEITEM item) { toShow_ = item; }

    // Returns the changes, with all fields set except `selected`, and empties the log.
    [[nodiscard]] TreeChanges take(TreeItems& items);
    // Makes the next take() deliver all items as inserted.
    void startOver(TreeItems& items);

private:
    void takeEverything(TreeItems& items, TreeChanges& changes);

    bool asked_ = false;
    std::vector<TreeRemoval> removed_;
    HTREEITEM afterRemoved_ = nullptr;  // the siblings after and before the items removed last
    HTREEITEM beforeRemoved_ = nullptr;
    std::vector<HTREEITEM> inserted_;
    std::vector<HTREEITEM> updated_;
    std::vector<HTREEITEM> folded_;
    HTREEITEM toShow_ = nullptr;
};

}  // namespace platform::window
