#include "controls/control_classes.h"
#include "edit_text.h"
#include "window/input.h"
#include "window/notify.h"

#include "ce/controls.h"

#include <algorithm>
#include <limits>

namespace platform::window {

namespace {

constexpr std::size_t FirstLimit = 32767;
constexpr int CharacterWidth = 6;

struct EditState : ClassState {
    explicit EditState(DWORD style) : readOnly((style & ES_READONLY) != 0) {}

    EditSelection selection;
    std::size_t limit = FirstLimit;  // most characters that the user can enter
    bool readOnly;

    bool editsText() const REQUIRES(coreMutex) override { return true; }
    void describe(const Window&, WindowState& state) const REQUIRES(coreMutex) override
    {
        state.selectionStart = static_cast<long>(selection.anchor);
        state.selectionEnd = static_cast<long>(selection.caret);
        state.readOnly = readOnly;
    }
};

bool isMultiLine(const Window& edit) REQUIRES(coreMutex)
{
    return edit.style & ES_MULTILINE;
}

void setSelection(Window& edit, EditState& state, EditSelection selection) REQUIRES(coreMutex)
{
    if (state.selection == selection)
        return;
    state.selection = selection;
    announce(edit, Change::Selection);
}

// The events of which the parent is notified after a change.
struct EditOutcome {
    bool changed = false;
    bool full = false;
};

void report(HWND handle, EditOutcome outcome)
{
    if (outcome.full)
        notifyCommand(handle, EN_MAXTEXT);
    if (!outcome.changed)
        return;
    notifyCommand(handle, EN_UPDATE);
    notifyCommand(handle, EN_CHANGE);
}

// Returns the maximum length of a text that the user enters. In a single-line edit that doesn't scroll, the text must
// fit into the width.
std::size_t limitOf(const Window& edit, const EditState& state) REQUIRES(coreMutex)
{
    if (isMultiLine(edit) || (edit.style & ES_AUTOHSCROLL))
        return state.limit;
    const int width = std::max(edit.rectangle.right - edit.rectangle.left, 0);
    return std::min(state.limit, static_cast<std::size_t>(width / CharacterWidth));
}

EditOutcome replaceSelection(Window& edit, EditState& state, std::u16string_view text, std::size_t limit)
    REQUIRES(coreMutex)
{
    const std::size_t start = state.selection.start();
    const std::size_t count = state.selection.end() - start;
    const std::size_t kept = edit.text.size() - count;
    const std::u16string_view added = cutToRoom(text, limit > kept ? limit - kept : 0);
    const bool full = added.size() < text.size();
    if (count == 0 && added.empty())
        return {.changed = false, .full = full};
    edit.text.replace(start, count, added);
    state.selection = {start + added.size(), start + added.size()};
    announceText(edit);
    announce(edit, Change::Selection);
    return {.changed = true, .full = full};
}

EditOutcome typeText(Window& edit, EditState& state, std::u16string_view typed) REQUIRES(coreMutex)
{
    return replaceSelection(edit, state, fitToEdit(typed, isMultiLine(edit)), limitOf(edit, state));
}

EditOutcome takeNewText(Window& edit, EditState& state, std::u16string_view text) REQUIRES(coreMutex)
{
    const std::u16string fitted = fitToEdit(text, isMultiLine(edit));
    const std::u16string_view whole = cutToRoom(fitted, limitOf(edit, state));
    state.selection = {whole.size(), whole.size()};
    const bool changed = edit.text != whole;
    setText(edit, whole);
    return {.changed = changed, .full = whole.size() < fitted.size()};
}

// Deletes the selection. If the selection is empty, deletes the text between the caret and the offset that `neighbour`
// returns.
EditOutcome erase(Window& edit, EditState& state, std::size_t (*neighbour)(std::u16string_view, std::size_t))
    REQUIRES(coreMutex)
{
    if (state.selection.anchor == state.selection.caret)
        state.selection.caret = neighbour(edit.text, state.selection.caret);
    return replaceSelection(edit, state, {}, std::numeric_limits<std::size_t>::max());
}

std::size_t caretAfter(const Window& edit, std::size_t caret, WPARAM key, bool control) REQUIRES(coreMutex)
{
    const std::u16string_view text = edit.text;
    switch (key) {
    case VK_LEFT:
        return previousCharacter(text, caret);
    case VK_RIGHT:
        return nextCharacter(text, caret);
    case VK_UP:
        return lineAbove(text, caret);
    case VK_DOWN:
        return lineBelow(text, caret);
    case VK_HOME:
        return control ? 0 : lineStart(text, caret);
    case VK_END:
        return control ? text.size() : lineEnd(text, caret);
    case VK_PRIOR:
        return 0;
    case VK_NEXT:
        return text.size();
    default:
        return caret;
    }
}

EditOutcome pressKey(Window& edit, EditState& state, WPARAM key, LPARAM modifiers) REQUIRES(coreMutex)
{
    const bool control = modifiers & KeyWithControl;
    if (control && key == u'A') {
        setSelection(edit, state, {0, edit.text.size()});
        return {};
    }
    if (key == VK_DELETE)
        return state.readOnly ? EditOutcome{} : erase(edit, state, nextCharacter);
    if (key == VK_TAB && control)
        return state.readOnly ? EditOutcome{} : typeText(edit, state, u"\t");
    const std::size_t caret = caretAfter(edit, state.selection.caret, key, control);
    const bool moves = key >= VK_PRIOR && key <= VK_DOWN;
    if (moves)
        setSelection(edit, state, {(modifiers & KeyWithShift) ? state.selection.anchor : caret, caret});
    return {};
}

EditOutcome typeCharacter(Window& edit, EditState& state, char16_t character) REQUIRES(coreMutex)
{
    if (state.readOnly)
        return {};
    if (character == VK_BACK)
        return erase(edit, state, previousCharacter);
    return typeText(edit, state, std::u16string_view(&character, 1));
}

LRESULT takeEditInput(HWND handle, UINT message, WPARAM wParam, LPARAM lParam)
{
    EditOutcome outcome;
    {
        const Lock lock(coreMutex);
        Window* edit = findWindow(handle);
        if (!edit || !takesInputOf(*edit))
            return 0;
        auto& state = stateOf<EditState>(*edit);
        const std::u16string arrived =
            message == InputText || message == InputNewText ? std::move(currentThread().arrivedText) : u"";
        if (message == WM_KEYDOWN)
            outcome = pressKey(*edit, state, wParam, lParam);
        else if (message == WM_CHAR)
            outcome = typeCharacter(*edit, state, static_cast<char16_t>(wParam));
        else if (!state.readOnly && message == InputText)
            outcome = typeText(*edit, state, arrived);
        else if (!state.readOnly)
            outcome = takeNewText(*edit, state, arrived);
    }
    report(handle, outcome);
    return 0;
}

LRESULT setWholeText(HWND handle, LPARAM lParam)
{
    bool multiLine = false;
    {
        const Lock lock(coreMutex);
        Window* edit = findWindow(handle);
        if (!edit)
            return 0;
        const auto* text = reinterpret_cast<const WCHAR*>(lParam);
        setSelection(*edit, stateOf<EditState>(*edit), {});
        setText(*edit, text ? std::u16string_view(text) : std::u16string_view());
        multiLine = isMultiLine(*edit);
    }
    if (!multiLine)
        report(handle, {.changed = true});
    return TRUE;
}

LRESULT replaceByProgram(HWND handle, LPARAM lParam)
{
    EditOutcome outcome;
    {
        const Lock lock(coreMutex);
        Window* edit = findWindow(handle);
        const auto* text = reinterpret_cast<const WCHAR*>(lParam);
        if (edit && text)
            outcome = replaceSelection(*edit, stateOf<EditState>(*edit), text, stateOf<EditState>(*edit).limit);
    }
    report(handle, outcome);
    return 0;
}

LRESULT giveSelection(const EditState& state, WPARAM start, LPARAM end)
{
    const auto first = static_cast<DWORD>(state.selection.start());
    const auto last = static_cast<DWORD>(state.selection.end());
    if (start)
        *reinterpret_cast<DWORD*>(start) = first;
    if (end)
        *reinterpret_cast<DWORD*>(end) = last;
    if (first > 0xFFFF || last > 0xFFFF)
        return -1;
    return static_cast<LRESULT>(MAKELONG(static_cast<WORD>(first), static_cast<WORD>(last)));
}

void selectByProgram(Window& edit, EditState& state, int start, int end) REQUIRES(coreMutex)
{
    const std::size_t size = edit.text.size();
    const auto at = [size](int wanted) { return wanted < 0 ? size : std::min(static_cast<std::size_t>(wanted), size); };
    if (start < 0)
        setSelection(edit, state, {state.selection.caret, state.selection.caret});
    else
        setSelection(edit, state, {at(start), at(end)});
}

// Returns the DLGC_ bits (window/notify.h) that say which keys the edit handles by itself. A multi-line edit leaves two
// keys to the dialog manager: Tab without Ctrl, and Enter if this key makes no line break. Enter makes a line break
// only without Ctrl, and only in an edit that has ES_WANTRETURN and isn't read-only.
LRESULT dialogCode(const Window& edit, WPARAM key, const MSG* message) REQUIRES(coreMutex)
{
    LRESULT code = HasSelection | WantsCharacters | WantsArrows;
    if (!isMultiLine(edit))
        return code;
    const bool control = message && (message->lParam & KeyWithControl);
    const bool breaksLines = (edit.style & ES_WANTRETURN) && !stateOf<EditState>(edit).readOnly && !control;
    const bool dialogs = (key == VK_TAB && !control) || (key == VK_RETURN && !breaksLines);
    return dialogs ? code : code | WantsAllKeys;
}

LRESULT answer(Window& edit, UINT message, WPARAM wParam, LPARAM lParam) REQUIRES(coreMutex)
{
    auto& state = stateOf<EditState>(edit);
    switch (message) {
    case EM_GETSEL:
        return giveSelection(state, wParam, lParam);
    case EM_SETSEL:
        selectByProgram(edit, state, static_cast<int>(wParam), static_cast<int>(lParam));
        return 0;
    case EM_LIMITTEXT:
        state.limit = wParam ? wParam : std::numeric_limits<std::int32_t>::max();
        return 0;
    case EM_SETREADONLY:
        state.readOnly = wParam != 0;
        announce(edit, Change::ReadOnly);
        return TRUE;
    case WM_GETDLGCODE:
        return dialogCode(edit, wParam, reinterpret_cast<const MSG*>(lParam));
    default:
        return 0;
    }
}

// Closes the dialog of a multi-line edit after Esc. The dialog manager doesn't handle this key, because such an edit
// asks for every key except Tab and Enter (see dialogCode).
void closeDialog(HWND handle)
{
    HWND dialog = nullptr;
    {
        const Lock lock(coreMutex);
        const Window* edit = findWindow(handle);
        if (edit && edit->parent && edit->parent->state->isDialog() && isMultiLine(*edit))
            dialog = edit->parent->handle;
    }
    if (dialog)
        PostMessageW(dialog, WM_CLOSE, 0, 0);
}

LRESULT editProcedure(HWND handle, UINT message, WPARAM wParam, LPARAM lParam)
{
    switch (message) {
    case WM_SETTEXT:
        return setWholeText(handle, lParam);
    case EM_REPLACESEL:
        return replaceByProgram(handle, lParam);
    case WM_KEYDOWN:
        if (wParam == VK_ESCAPE)
            closeDialog(handle);
        return takeEditInput(handle, message, wParam, lParam);
    case WM_CHAR:
    case InputText:
    case InputNewText:
        return takeEditInput(handle, message, wParam, lParam);
    case EM_GETSEL:
    case EM_SETSEL:
    case EM_LIMITTEXT:
    case EM_SETREADONLY:
    case WM_GETDLGCODE:
        break;
    default:
        return DefWindowProcW(handle, message, wParam, lParam);
    }
    const Lock lock(coreMutex);
    Window* edit = findWindow(handle);
    return edit ? answer(*edit, message, wParam, lParam) : 0;
}

std::unique_ptr<ClassState> makeEditState(DWORD style)
{
    return std::make_unique<EditState>(style);
}

}  // namespace

WindowClass editClass()
{
    return {u"Edit", editProcedure, WindowKind::Edit, true, makeEditState, 0};
}

}  // namespace platform::window
