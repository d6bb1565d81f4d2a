// list_box_state.h - the data of a list box, shared by its messages (list_box.cpp) and its input (list_box_input.cpp).
//
// A list box has at most one selected row, or any number of them with LBS_MULTIPLESEL.
#pragma once

#include "list_rows.h"
#include "window/core.h"
#include "window/type_ahead.h"

#include "ce/controls.h"

namespace platform::window {

struct ListBoxState : ClassState {
    explicit ListBoxState(DWORD style) : rows((style & LBS_SORT) != 0), multiple((style & LBS_MULTIPLESEL) != 0) {}

    ListRows rows;
    bool multiple;
    long caret = -1;   // single selection: the selected row or -1; multiple: the row with the focus frame
    long anchor = -1;  // multiple: the row where a selection with Shift began; -1: none
    TypeAhead typed;
    long selectedCount = 0;
    int extent = 0;  // scrollable width, in virtual pixels

    void describe(const Window&, WindowState& state) const REQUIRES(coreMutex) override
    {
        state.caretRow = static_cast<int>(caret);
        state.extent = extent;
    }
};

inline bool isRow(const ListBoxState& state, long index)
{
    return index >= 0 && static_cast<std::size_t>(index) < state.rows.size();
}

inline Row& rowAt(ListBoxState& state, long index)
{
    return state.rows.row(static_cast<std::size_t>(index));
}

inline void select(ListBoxState& state, long index, bool selected)
{
    Row& row = rowAt(state, index);
    if (row.selected == selected)
        return;
    row.selected = selected;
    state.selectedCount += selected ? 1 : -1;
}

// Selects the row in a list box with single selection, and deselects the row that was selected before. With -1 no row
// is selected afterwards.
inline void moveSelection(ListBoxState& state, long index)
{
    if (isRow(state, state.caret))
        select(state, state.caret, false);
    state.caret = index;
    if (isRow(state, index))
        select(state, index, true);
}

// Handles a key, a character, a click or a double click on the list box.
LRESULT takeListInput(HWND handle, UINT message, WPARAM wParam, LPARAM lParam) EXCLUDES(coreMutex);

}  // namespace platform::window
