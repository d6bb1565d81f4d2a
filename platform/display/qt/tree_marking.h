// tree_marking.h - what a row's picture says about marking: how the user marks and unmarks the item.
#pragma once

#include "user_input.h"

#include "tree_control/tree_display.h"

namespace platform::qt {

// A folder is marked by a command, any other item by a click, which marks and unmarks by turns.
class TreeMarking {
public:
    TreeMarking(HWND tree, HTREEITEM item);

    bool isFolder() const { return isFolder_; }
    bool canMark() const { return isFolder_ || (canClick_ && !isMarked_); }
    bool canUnmark() const { return isMarked_; }
    bool canExpand() const { return state_.hasButton; }

    void mark(const UserInput& input) const { set(input, true); }
    void unmark(const UserInput& input) const { set(input, false); }
    // A folder of which something is marked looks marked.
    void toggle(const UserInput& input) const { set(input, !isMarked_); }
    void expandAllBelow(const UserInput& input) const;

private:
    void set(const UserInput& input, bool marked) const;

    HWND tree_;
    window::TreeItemState state_;
    bool isFolder_ = false;
    bool canClick_ = false;  // and what a click does is mark or unmark
    bool isMarked_ = false;
};

}  // namespace platform::qt
