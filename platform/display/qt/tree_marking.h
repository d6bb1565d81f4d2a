// tree_marking.h - marks and unmarks an item of the tree for the user. The picture in the item's row shows whether the
// item can be marked.
#pragma once

#include "user_input.h"

#include "tree_control/tree_display.h"

namespace platform::qt {

// Commands mark and unmark a folder. A click marks any other item, and the next click unmarks it.
class TreeMarking {
public:
    TreeMarking(HWND tree, HTREEITEM item);

    bool isFolder() const { return isFolder_; }
    bool canMark() const { return isFolder_ || (canClick_ && !isMarked_); }
    bool canUnmark() const { return isMarked_; }
    bool canExpand() const { return state_.hasButton; }

    void mark(const UserInput& input) const { set(input, true); }
    void unmark(const UserInput& input) const { set(input, false); }
    // A folder is treated as marked if anything in it is marked.
    void toggle(const UserInput& input) const { set(input, !isMarked_); }
    void expandAllBelow(const UserInput& input) const;

private:
    void set(const UserInput& input, bool marked) const;

    HWND tree_;
    window::TreeItemState state_;
    bool isFolder_ = false;
    bool canClick_ = false;  // a click marks or unmarks the item
    bool isMarked_ = false;
};

}  // namespace platform::qt
