#include "list_box_state.h"
#include "window/input.h"
#include "window/notify.h"

#include <algorithm>
#include <optional>

namespace platform::window {

namespace {

constexpr int RowHeight = 13;

// The following functions handle input of the user. The state changes first, and then the parent is notified.

struct RowOutcome {
    bool notify = false;
    bool doubleClick = false;
};

RowOutcome clickRow(Window& box, ListBoxState& state, long index, bool doubleClick) REQUIRES(coreMutex)
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

RowOutcome moveCaret(Window& box, ListBoxState& state, long index) REQUIRES(coreMutex)
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

// Returns the row to which the key moves the caret, or nothing if the key doesn't move the caret.
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

// Handles Shift with a key that moves the caret. Selects the rows from the anchor, where the selection began, to the
// new caret. Deselects the other rows between the old and the new caret.
RowOutcome extendSelection(Window& box, ListBoxState& state, long index) REQUIRES(coreMutex)
{
    if (!isRow(state, 0))
        return {};
    if (!isRow(state, state.anchor))
        state.anchor = std::max(state.caret, 0L);
    const long from = std::max(state.caret, 0L);
    const RowOutcome outcome = moveCaret(box, state, index);
    const auto [low, high] = std::minmax(state.anchor, state.caret);
    for (long row = std::min({low, from}); row <= std::max({high, from}); ++row)
        select(state, row, row >= low && row <= high);
    announce(box, Change::Selection);
    return outcome;
}

RowOutcome selectAll(Window& box, ListBoxState& state, bool selected) REQUIRES(coreMutex)
{
    for (long row = 0; isRow(state, row); ++row)
        select(state, row, selected);
    announce(box, Change::Selection);
    return {.notify = true};
}

RowOutcome pressKey(Window& box, ListBoxState& state, WPARAM key, LPARAM modifiers) REQUIRES(coreMutex)
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

// Returns the first row that begins with the typed text. If there is none, returns the first row that contains the
// text, or -1 if there is no such row either. The search begins at the caret row. After the last row it continues with
// the first. If `typed` is one letter or the same letter repeated (isOneLetter), the function searches for that letter,
// and begins at the row after the caret row.
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

// If a space continues a typed text and the search finds a row for the longer text, the space is part of that text.
// With multiple selection, any other space selects or deselects the caret row.
RowOutcome typeCharacter(Window& box, ListBoxState& state, char16_t character) REQUIRES(coreMutex)
{
    if (character < u' ')
        return {};
    const std::u16string typed = state.typed.with(character);
    const long found = search(state, typed);
    if (character == u' ' && (found < 0 || typed.size() == 1)) {
        state.typed.end();
        return state.multiple ? clickRow(box, state, std::max(state.caret, 0L), false) : RowOutcome{};
    }
    state.typed.note(typed);
    state.anchor = -1;
    return found < 0 ? RowOutcome{} : moveCaret(box, state, found);
}

}  // namespace

LRESULT takeListInput(HWND handle, UINT message, WPARAM wParam, LPARAM lParam)
{
    RowOutcome outcome;
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

}  // namespace platform::window
