// list_box.h - what a list box holds.
#pragma once

#include "list_rows.h"
#include "window/core.h"

#include "ce/controls.h"

namespace platform::window {

struct ListBoxState : ControlState {
    explicit ListBoxState(DWORD style) : rows((style & LBS_SORT) != 0), multiple((style & LBS_MULTIPLESEL) != 0) {}

    ListRows rows;
    bool multiple;
    long caret = -1;  // single selection: the selected row or -1; multiple: the row with the focus frame
    long selectedCount = 0;
    int extent = 0;  // virtual pixels that the program wants to be scrolled over sideways
};

}  // namespace platform::window
