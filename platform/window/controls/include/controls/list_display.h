// list_display.h - lets a display read the rows of a list box. window/display.h explains what a display is, and has the
// rest of the interface.
#pragma once

#include "ce/types.h"

#include <string>
#include <vector>

namespace platform::window {

struct ListRow {
    std::u16string text;
    std::u16string detail;  // to be shown beside the text
    bool selected = false;
};

// Both functions lock coreMutex.
std::vector<ListRow> listRows(HWND listBox);  // empty if the window doesn't exist
// Returns the index of the first row whose text equals `text`, including case. Returns -1 if there is none.
long findListRow(HWND listBox, const std::u16string& text);

}  // namespace platform::window
