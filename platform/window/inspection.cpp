// Copies of what the core holds, for displays.
#include "button.h"
#include "dialog_launch.h"
#include "edit.h"
#include "list_box.h"
#include "progress_bar.h"

#include <algorithm>

namespace platform::window {

namespace {

void readControl(Window& window, WindowState& state)
{
    switch (state.kind) {
    case WindowKind::Button:
        state.check = stateOf<ButtonState>(window).check;
        if (window.parent && window.parent->dialog)
            state.defaultButton = buttonForEnter(*window.parent) == &window;
        break;
    case WindowKind::Edit: {
        const auto& edit = stateOf<EditState>(window);
        state.selectionStart = static_cast<long>(edit.selection.anchor);
        state.selectionEnd = static_cast<long>(edit.selection.caret);
        state.readOnly = edit.readOnly;
        break;
    }
    case WindowKind::ListBox:
        state.caretRow = static_cast<int>(stateOf<ListBoxState>(window).caret);
        state.extent = stateOf<ListBoxState>(window).extent;
        break;
    case WindowKind::ProgressBar: {
        const auto& bar = stateOf<ProgressState>(window);
        state.progressLow = bar.low;
        state.progressHigh = bar.high;
        state.progressPosition = bar.position;
        break;
    }
    default:
        break;
    }
}

}  // namespace

bool readWindow(HWND handle, WindowState& state)
{
    const Lock lock = lockCore();
    Window* window = findWindow(handle);
    if (!window)
        return false;
    state = {};
    state.window = handle;
    state.parent = window->parent ? window->parent->handle : window->owner;
    state.thread = window->thread->id;
    state.kind = window->windowClass->kind;
    if (state.kind == WindowKind::Dialog && window->dialog && window->dialog->messageBox)
        state.kind = WindowKind::MessageBox;
    else if (state.kind == WindowKind::Main && window->parent)
        state.kind = WindowKind::Other;
    state.className = window->windowClass->name;
    state.text = window->text;
    state.id = window->id;
    state.style = window->style;
    state.exStyle = window->exStyle;
    state.place = window->place;
    state.visible = hasStyle(*window, WS_VISIBLE) && !isCondemned(*window);
    state.enabled = !hasStyle(*window, WS_DISABLED);
    state.focused = window->thread->focus == handle;
    state.messageBoxType = window->dialog ? window->dialog->messageBoxType : 0;
    state.iconId = window->iconId;
    readControl(*window, state);
    return true;
}

std::vector<HWND> childrenOf(HWND handle)
{
    const Lock lock = lockCore();
    std::vector<HWND> children;
    if (const Window* window = findWindow(handle))
        std::ranges::transform(window->children, std::back_inserter(children), &Window::handle);
    return children;
}

std::vector<HWND> topLevelWindows()
{
    const Lock lock = lockCore();
    return core().topLevel;
}

std::vector<ListRow> listRows(HWND listBox)
{
    const Lock lock = lockCore();
    std::vector<ListRow> rows;
    if (const auto* state = findState<ListBoxState>(listBox, WindowKind::ListBox)) {
        rows.reserve(state->rows.size());
        state->rows.forEach([&rows](const Row& row) { rows.push_back({row.text, row.selected}); });
    }
    return rows;
}

long findListRow(HWND listBox, const std::u16string& text)
{
    const Lock lock = lockCore();
    auto* state = findState<ListBoxState>(listBox, WindowKind::ListBox);
    if (!state)
        return -1;
    // Among the rows that differ by case alone, the one that is meant.
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
