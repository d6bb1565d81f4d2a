// tree_marking.h - marks and unmarks an item of the tree for the user. The picture in the item's row shows whether the
// item can be marked.
#pragma once

#include "user_input.h"

#include "tree_control/tree_display.h"

namespace platform::qt {

// The program has commands that mark and unmark a folder. Any other item that can be marked is marked by a click, and
// unmarked by the next click.
class TreeMarking {
public:
    TreeMarking(HWND tree, HTREEITEM item);

    bool isFolder() const { return isFolder_; }
    bool canMark() const { return isFolder_ || (canClick_ && !isMarked_); }
    bool canUnmark() const { return isMarked_; }
    bool canExpand() const { return state_.hasButton; }

    void mark(const UserInput& input) const { set(input, true); }
    void unmark(const UserInput& input) const { set(input, false); }
    // Unmarks the item if it is marked. Otherwise marks the item if it can be marked. A folder counts as marked if
    // anything in it is marked.
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
