#include "controls/control_classes.h"
#include "controls/list_display.h"
#include "list_box_state.h"
#include "window/input.h"
#include "window/notify.h"

#include "ce/controls.h"

#include <algorithm>

namespace platform::window {

namespace {

// The following functions handle messages of the program. They change rows and selection without notifying the parent.

LRESULT addRow(Window& box, ListBoxState& state, LPARAM text, std::optional<long> at) REQUIRES(coreMutex)
{
    if (!text)
        return LB_ERR;
    const std::u16string_view added(reinterpret_cast<const WCHAR*>(text));
    long index = 0;
    if (!at) {
        index = static_cast<long>(state.rows.add(added));
    } else {
        index = *at == -1 ? static_cast<long>(state.rows.size()) : *at;
        if (index < 0 || static_cast<std::size_t>(index) > state.rows.size())
            return LB_ERR;
        state.rows.insert(static_cast<std::size_t>(index), added);
    }
    if (state.caret >= index)
        ++state.caret;
    announce(box, Change::Rows);
    return index;
}

LRESULT deleteRow(Window& box, ListBoxState& state, long index) REQUIRES(coreMutex)
{
    if (!isRow(state, index))
        return LB_ERR;
    select(state, index, false);
    state.rows.erase(static_cast<std::size_t>(index));
    if (state.caret == index)
        state.caret = -1;
    else if (state.caret > index)
        --state.caret;
    announce(box, Change::Rows);
    return static_cast<LRESULT>(state.rows.size());
}

LRESULT resetRows(Window& box, ListBoxState& state) REQUIRES(coreMutex)
{
    state.rows.clear();
    state.caret = -1;
    state.selectedCount = 0;
    announce(box, Change::Rows);
    return 0;
}

LRESULT giveRow(ListBoxState& state, long index, LPARAM out)
{
    if (!isRow(state, index))
        return LB_ERR;
    const std::u16string& text = rowAt(state, index).text;
    if (out)
        *std::copy(text.begin(), text.end(), reinterpret_cast<WCHAR*>(out)) = 0;
    return static_cast<LRESULT>(text.size());
}

LRESULT setDetail(Window& box, ListBoxState& state, long index, LPARAM detail) REQUIRES(coreMutex)
{
    if (!isRow(state, index) || !detail)
        return LB_ERR;
    rowAt(state, index).detail = reinterpret_cast<const WCHAR*>(detail);
    announce(box, Change::Rows);
    return 0;
}

LRESULT setSelected(Window& box, ListBoxState& state, bool selected, long index) REQUIRES(coreMutex)
{
    if (!state.multiple || (index != -1 && !isRow(state, index)))
        return LB_ERR;
    if (index != -1) {
        select(state, index, selected);
    } else {
        for (long each = 0; isRow(state, each); ++each)
            select(state, each, selected);
    }
    announce(box, Change::Selection);
    return 0;
}

LRESULT setCurrent(Window& box, ListBoxState& state, long index) REQUIRES(coreMutex)
{
    if (state.multiple || (index != -1 && !isRow(state, index)))
        return LB_ERR;
    moveSelection(state, index);
    announce(box, Change::Selection);
    return index;
}

LRESULT setExtent(Window& box, ListBoxState& state, int extent) REQUIRES(coreMutex)
{
    state.extent = std::max(extent, 0);
    announce(box, Change::Rows);
    return 0;
}

LRESULT findRow(ListBoxState& state, long after, LPARAM text)
{
    if (!text)
        return LB_ERR;
    const auto start = isRow(state, after) ? std::optional(static_cast<std::size_t>(after)) : std::nullopt;
    const auto found = state.rows.find(reinterpret_cast<const WCHAR*>(text), start);
    return found ? static_cast<LRESULT>(*found) : LB_ERR;
}

// Returns 1 if the row is selected and 0 if it isn't. Returns LB_ERR if there is no such row. The index can be LB_ERR,
// because a caller may pass the result of an earlier call.
LRESULT isSelected(ListBoxState& state, long index)
{
    if (!isRow(state, index))
        return LB_ERR;
    return rowAt(state, index).selected ? 1 : 0;
}

LRESULT answer(Window& box, ListBoxState& state, UINT message, WPARAM wParam, LPARAM lParam) REQUIRES(coreMutex)
{
    const long index = static_cast<int>(wParam);
    switch (message) {
    case LB_ADDSTRING:
        return addRow(box, state, lParam, std::nullopt);
    case LB_INSERTSTRING:
        return addRow(box, state, lParam, index);
    case LB_DELETESTRING:
        return deleteRow(box, state, index);
    case LB_RESETCONTENT:
        return resetRows(box, state);
    case LB_SETSEL:
        return setSelected(box, state, wParam != 0, static_cast<int>(lParam));
    case LB_SETCURSEL:
        return setCurrent(box, state, index);
    case LB_GETSEL:
        return isSelected(state, index);
    case LB_GETCURSEL:
    case LB_GETCARETINDEX:
        return state.caret;
    case LB_GETTEXT:
        return giveRow(state, index, lParam);
    case LB_GETTEXTLEN:
        return giveRow(state, index, 0);
    case LB_GETCOUNT:
        return static_cast<LRESULT>(state.rows.size());
    case LB_GETSELCOUNT:
        return state.multiple ? state.selectedCount : LB_ERR;
    case LB_SETHORIZONTALEXTENT:
        return setExtent(box, state, static_cast<int>(wParam));
    case LB_FINDSTRINGEXACT:
        return findRow(state, index, lParam);
    case LB_SETROWDETAIL:
        return setDetail(box, state, index, lParam);
    case WM_GETDLGCODE:
        return WantsArrows | WantsCharacters;
    default:
        return 0;
    }
}

LRESULT listBoxProcedure(HWND handle, UINT message, WPARAM wParam, LPARAM lParam)
{
    switch (message) {
    case WM_KEYDOWN:
    case WM_CHAR:
    case InputClick:
    case InputDoubleClick:
        return takeListInput(handle, message, wParam, lParam);
    default:
        break;
    }
    const bool own = (message >= LB_ADDSTRING && message <= LB_FINDSTRINGEXACT) || message == LB_SETROWDETAIL ||
                     message == WM_GETDLGCODE;
    if (!own)
        return DefWindowProcW(handle, message, wParam, lParam);
    const Lock lock(coreMutex);
    Window* box = findWindow(handle);
    return box ? answer(*box, stateOf<ListBoxState>(*box), message, wParam, lParam) : 0;
}

std::unique_ptr<ClassState> makeListBoxState(DWORD style)
{
    return std::make_unique<ListBoxState>(style);
}

}  // namespace

WindowClass listBoxClass()
{
    return {u"ListBox", listBoxProcedure, WindowKind::ListBox, true, makeListBoxState, 0};
}

std::vector<ListRow> listRows(HWND listBox)
{
    const Lock lock(coreMutex);
    std::vector<ListRow> rows;
    if (const auto* state = findState<ListBoxState>(listBox, WindowKind::ListBox)) {
        rows.reserve(state->rows.size());
        state->rows.forEach([&rows](const Row& row) { rows.push_back({row.text, row.detail, row.selected}); });
    }
    return rows;
}

long findListRow(HWND listBox, const std::u16string& text)
{
    const Lock lock(coreMutex);
    auto* state = findState<ListBoxState>(listBox, WindowKind::ListBox);
    if (!state)
        return -1;
    // ListRows::find ignores case. So all of its results are compared with the exact text.
    const auto first = state->rows.find(text, std::nullopt);
    for (auto found = first; found; found = state->rows.find(text, found)) {
        if (state->rows.row(*found).text == text)
            return static_cast<long>(*found);
        if (state->rows.find(text, found) == first)
            break;
    }
    return -1;
}

}  // namespace platform::window
