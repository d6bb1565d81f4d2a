// list_display.h - what a display asks about a list box; window/display.h has the rest.
#pragma once

#include "ce/types.h"

#include <string>
#include <vector>

namespace platform::window {

struct ListRow {
    std::u16string text;
    std::u16string detail;  // to be shown beside it
    bool selected = false;
};

// Each locks the core's mutex while it runs.
std::vector<ListRow> listRows(HWND listBox);  // empty for a dead window
// The index of the row with that whole text, where case counts. -1 if there is none.
long findListRow(HWND listBox, const std::u16string& text);

}  // namespace platform::window
