// A list box has at most one selected row, or any number of them with LBS_MULTIPLESEL.
#include "controls/control_classes.h"
#include "controls/list_display.h"
#include "list_rows.h"
#include "window/input.h"
#include "window/notify.h"
#include "window/type_ahead.h"

#include "ce/controls.h"

#include <algorithm>

namespace platform::window {

namespace {

constexpr int RowHeight = 13;

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

bool isRow(const ListBoxState& state, long index)
{
    return index >= 0 && static_cast<std::size_t>(index) < state.rows.size();
}

Row& rowAt(ListBoxState& state, long index)
{
    return state.rows.row(static_cast<std::size_t>(index));
}

void select(ListBoxState& state, long index, bool selected)
{
    Row& row = rowAt(state, index);
    if (row.selected == selected)
        return;
    row.selected = selected;
    state.selectedCount += selected ? 1 : -1;
}

// For a single selection. -1: no row.
void moveSelection(ListBoxState& state, long index)
{
    if (isRow(state, state.caret))
        select(state, state.caret, false);
    state.caret = index;
    if (isRow(state, index))
        select(state, index, true);
}

// Messages of the program. They change rows and selection without notifying the parent.

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
    const auto behind = isRow(state, after) ? std::optional(static_cast<std::size_t>(after)) : std::nullopt;
    const auto found = state.rows.find(reinterpret_cast<const WCHAR*>(text), behind);
    return found ? static_cast<LRESULT>(*found) : LB_ERR;
}

// LB_ERR, not 0, for an index that isn't a row, such as an LB_ERR that the caller passes on: 0 means "not selected".
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
    case WM_GETDLGCODE:
        return WantsArrows | WantsCharacters;
    default:
        return 0;
    }
}

// Input of the user. The state changes first, then the parent is notified.

struct Outcome {
    bool notify = false;
    bool doubleClick = false;
};

Outcome clickRow(Window& box, ListBoxState& state, long index, bool doubleClick) REQUIRES(coreMutex)
{
    if (!isRow(state, index))
        return {};
    state.anchor = -1;
    state.typed.end();
    if (state.multiple) {
        state.caret = index;
        select(state, index, !rowAt(state, index).selected);
    } else {
        moveSelection(state, index);
    }
    announce(box, Change::Selection);
    return {.notify = state.multiple || !doubleClick, .doubleClick = doubleClick};
}

Outcome moveCaret(Window& box, ListBoxState& state, long index) REQUIRES(coreMutex)
{
    const long last = static_cast<long>(state.rows.size()) - 1;
    if (last < 0)
        return {};
    const long target = std::clamp(index, 0L, last);
    const bool moved = target != state.caret;
    if (state.multiple)
        state.caret = target;
    else
        moveSelection(state, target);
    if (moved)
        announce(box, Change::Selection);
    return {.notify = moved || state.multiple};
}

// The row to which a key moves the caret. Nothing for any other key.
std::optional<long> targetOf(const Window& box, const ListBoxState& state, WPARAM key) REQUIRES(coreMutex)
{
    const long page = std::max<long>((box.rectangle.bottom - box.rectangle.top) / RowHeight, 1);
    switch (key) {
    case VK_UP:
    case VK_LEFT:
        return state.caret - 1;
    case VK_DOWN:
    case VK_RIGHT:
        return state.caret + 1;
    case VK_PRIOR:
        return state.caret - page;
    case VK_NEXT:
        return std::max(state.caret, 0L) + page;
    case VK_HOME:
        return 0;
    case VK_END:
        return static_cast<long>(state.rows.size());
    default:
        return std::nullopt;
    }
}

// Shift and a key that moves: the rows from where the selection began to the new caret are selected, and those between
// the old and the new caret that it leaves no longer are.
Outcome extendSelection(Window& box, ListBoxState& state, long index) REQUIRES(coreMutex)
{
    if (!isRow(state, 0))
        return {};
    if (!isRow(state, state.anchor))
        state.anchor = std::max(state.caret, 0L);
    const long from = std::max(state.caret, 0L);
    const Outcome outcome = moveCaret(box, state, index);
    const auto [low, high] = std::minmax(state.anchor, state.caret);
    for (long row = std::min({low, from}); row <= std::max({high, from}); ++row)
        select(state, row, row >= low && row <= high);
    announce(box, Change::Selection);
    return outcome;
}

Outcome selectAll(Window& box, ListBoxState& state, bool selected) REQUIRES(coreMutex)
{
    (void)setSelected(box, state, selected, -1);
    return {.notify = true};
}

Outcome pressKey(Window& box, ListBoxState& state, WPARAM key, LPARAM modifiers) REQUIRES(coreMutex)
{
    const bool shift = modifiers & KeyWithShift;
    if (state.multiple && key == u'A' && (modifiers & KeyWithControl))
        return selectAll(box, state, !shift);
    if (typesCharacter(key))
        return {};
    state.typed.end();
    const std::optional<long> target = targetOf(box, state, key);
    if (!target)
        return {};
    if (state.multiple && shift)
        return extendSelection(box, state, *target);
    state.anchor = -1;
    return moveCaret(box, state, *target);
}

// The next row that begins with what was typed, or else contains it. -1 if there is none.
long search(ListBoxState& state, std::u16string_view typed)
{
    const bool oneLetter = isOneLetter(typed);
    const std::u16string_view start = oneLetter ? typed.substr(0, 1) : typed;
    const long count = static_cast<long>(state.rows.size());
    const long first = state.caret + (oneLetter || state.caret < 0 ? 1 : 0);
    for (const auto fits : {beginsWith, contains}) {
        for (long step = 0; step < count; ++step) {
            const long index = (first + step) % count;
            if (fits(rowAt(state, index).text, start))
                return index;
        }
    }
    return -1;
}

// A blank selects or deselects the caret row, unless it continues a text that a row has.
Outcome typeCharacter(Window& box, ListBoxState& state, char16_t character) REQUIRES(coreMutex)
{
    if (character < u' ')
        return {};
    const std::u16string typed = state.typed.with(character);
    const long found = search(state, typed);
    if (character == u' ' && (found < 0 || typed.size() == 1)) {
        state.typed.end();
        return state.multiple ? clickRow(box, state, std::max(state.caret, 0L), false) : Outcome{};
    }
    state.typed.note(typed);
    state.anchor = -1;
    return found < 0 ? Outcome{} : moveCaret(box, state, found);
}

LRESULT takeInput(HWND handle, UINT message, WPARAM wParam, LPARAM lParam)
{
    Outcome outcome;
    {
        const Lock lock(coreMutex);
        Window* box = findWindow(handle);
        if (!box || !takesInputOf(*box))
            return 0;
        auto& state = stateOf<ListBoxState>(*box);
        if (message == WM_KEYDOWN)
            outcome = pressKey(*box, state, wParam, lParam);
        else if (message == WM_CHAR)
            outcome = typeCharacter(*box, state, static_cast<char16_t>(wParam));
        else
            outcome = clickRow(*box, state, static_cast<int>(wParam), message == InputDoubleClick);
        if (!(box->style & LBS_NOTIFY))
            return 0;
    }
    if (outcome.notify)
        notifyCommand(handle, LBN_SELCHANGE);
    if (outcome.doubleClick)
        notifyCommand(handle, LBN_DBLCLK);
    return 0;
}

LRESULT listBoxProcedure(HWND handle, UINT message, WPARAM wParam, LPARAM lParam)
{
    switch (message) {
    case WM_KEYDOWN:
    case WM_CHAR:
    case InputClick:
    case InputDoubleClick:
        return takeInput(handle, message, wParam, lParam);
    default:
        break;
    }
    const bool own = (message >= LB_ADDSTRING && message <= LB_FINDSTRINGEXACT) || message == WM_GETDLGCODE;
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
        state->rows.forEach([&rows](const Row& row) { rows.push_back({row.text, row.selected}); });
    }
    return rows;
}

long findListRow(HWND listBox, const std::u16string& text)
{
    const Lock lock(coreMutex);
    auto* state = findState<ListBoxState>(listBox, WindowKind::ListBox);
    if (!state)
        return -1;
    // The rows' own search ignores case, so look through all of its results for the exact text.
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
