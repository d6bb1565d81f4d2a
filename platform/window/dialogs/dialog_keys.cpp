#include "controls/button.h"
#include "dialog_state.h"
#include "window/focus.h"
#include "window/input.h"
#include "window/notify.h"

#include "text/case_folding.h"

#include "ce/controls.h"

#include <algorithm>

using namespace platform::window;

namespace {

void command(HWND dialog, int id, HWND control)
{
    SendMessageW(dialog, WM_COMMAND, MAKELONG(static_cast<WORD>(id), BN_CLICKED), reinterpret_cast<LPARAM>(control));
}

// Sends the command `id` to the dialog, even if no button has that id. Does nothing if the button with that id is
// disabled.
void commandOf(HWND handle, int id)
{
    HWND control = nullptr;
    {
        const Lock lock(coreMutex);
        Window* dialog = findWindow(handle);
        const Window* button = dialog ? findChild(*dialog, id) : nullptr;
        if (!dialog || (button && hasStyle(*button, WS_DISABLED)))
            return;
        control = button ? button->handle : nullptr;
    }
    command(handle, id, control);
}

// Handles Enter. `at` is the control that received the key. If `at` is an enabled push button, presses that button. If
// `at` isn't a push button, presses the default button. Sends IDOK if `at` is a disabled push button, or if the dialog
// has no default button.
void enter(HWND handle, HWND at)
{
    int id = IDOK;
    {
        const Lock lock(coreMutex);
        const Window* window = findWindow(handle);
        const DialogState* dialog = findDialog(window);
        if (!dialog)
            return;
        const Window* focused = findWindow(at);
        if (focused && focused->parent == window && isPushButton(*focused)) {
            if (!hasStyle(*focused, WS_DISABLED))
                id = focused->id;
        } else if (dialog->defaultId) {
            id = dialog->defaultId;
        }
    }
    commandOf(handle, id);
}

// Handles an arrow key. Moves the focus within the group of `from`. If the control that gets the focus is a radio
// button, clicks that button.
void moveInGroup(HWND from, bool backward)
{
    HWND target = nullptr;
    bool radio = false;
    {
        const Lock lock(coreMutex);
        Window* control = findWindow(from);
        if (!control || !control->parent)
            return;
        const Window* next = nextInGroup(*control, backward);
        target = next->handle;
        radio = isAutoRadioButton(*next);
    }
    if (target == from)
        return;
    SetFocus(target);
    if (radio)
        SendMessageW(target, BM_CLICK, 0, 0);
}

// Returns the control's mnemonic with its case folded, or 0 if there is none. The mnemonic is the letter after & in the
// control's text. The buttons of a message box have no &, so their mnemonic is the first letter.
char16_t mnemonicOf(const Window& control) REQUIRES(coreMutex)
{
    const bool isText = control.windowClass->kind == WindowKind::Static && !(control.style & SS_NOPREFIX);
    if (!isText && control.windowClass->kind != WindowKind::Button)
        return 0;
    const std::u16string& text = control.text;
    for (std::size_t at = 0; at + 1 < text.size(); ++at) {
        if (text[at] != u'&')
            continue;
        if (text[at + 1] != u'&')
            return platform::text::foldCase(text[at + 1]);
        ++at;
    }
    const DialogState* dialog = findDialog(control.parent);
    const bool firstLetter = dialog && dialog->messageBox && isPushButton(control);
    return firstLetter && !text.empty() ? platform::text::foldCase(text[0]) : char16_t{0};
}

// Returns the first visible and enabled control after `from` that has this mnemonic. After the last control the search
// continues with the first. If a label has the mnemonic, returns the next control that takes the focus. Returns null if
// there is no such control.
Window* controlOf(Window& dialog, const Window* from, char16_t letter) REQUIRES(coreMutex)
{
    const std::vector<Window*>& all = dialog.children;
    const std::size_t count = all.size();
    const auto self = std::ranges::find(all, from);
    const std::size_t start = self == all.end() ? count - 1 : static_cast<std::size_t>(self - all.begin());
    for (std::size_t step = 1; step <= count; ++step) {
        std::size_t at = (start + step) % count;
        if (mnemonicOf(*all[at]) != letter || !hasStyle(*all[at], WS_VISIBLE) || hasStyle(*all[at], WS_DISABLED))
            continue;
        while (at + 1 < count && !all[at]->windowClass->takesFocus)
            ++at;
        if (acceptsFocus(*all[at]))
            return all[at];
    }
    return nullptr;
}

bool pressMnemonic(HWND handle, HWND from, char16_t character)
{
    HWND target = nullptr;
    bool button = false;
    {
        const Lock lock(coreMutex);
        Window* dialog = findWindow(handle);
        const char16_t letter = platform::text::foldCase(character);
        const Window* found = dialog && letter ? controlOf(*dialog, findWindow(from), letter) : nullptr;
        if (!found)
            return false;
        target = found->handle;
        button = found->windowClass->kind == WindowKind::Button && mnemonicOf(*found) == letter;
    }
    SetFocus(target);
    if (button)
        SendMessageW(target, BM_CLICK, 0, 0);
    return true;
}

// Asks the control which keys it handles without the dialog manager.
LRESULT dialogCodeOf(const MSG& message)
{
    return SendMessageW(message.hwnd, WM_GETDLGCODE, message.wParam, reinterpret_cast<LPARAM>(&message));
}

bool takeKey(HWND dialog, const MSG& message)
{
    const WPARAM key = message.wParam;
    switch (key) {
    case VK_TAB:
        if ((message.lParam & KeyWithControl) || (dialogCodeOf(message) & (WantsTab | WantsAllKeys)))
            return false;
        SetFocus(message.hwnd);
        SendMessageW(dialog, WM_NEXTDLGCTL, (message.lParam & KeyWithShift) ? 1 : 0, 0);
        return true;
    case VK_LEFT:
    case VK_UP:
    case VK_RIGHT:
    case VK_DOWN:
        if (dialogCodeOf(message) & (WantsArrows | WantsAllKeys))
            return false;
        moveInGroup(message.hwnd, key == VK_LEFT || key == VK_UP);
        return true;
    case VK_RETURN:
        if (dialogCodeOf(message) & WantsAllKeys)
            return false;
        enter(dialog, message.hwnd);
        return true;
    case VK_ESCAPE:
        if (dialogCodeOf(message) & WantsAllKeys)
            return false;
        commandOf(dialog, IDCANCEL);
        return true;
    default:
        return false;
    }
}

bool takeText(HWND dialog, const MSG& message)
{
    if (dialogCodeOf(message) & (WantsCharacters | WantsAllKeys))
        return false;
    std::u16string text;
    {
        const Lock lock(coreMutex);
        text = std::exchange(currentThread().arrivedText, {});
    }
    for (const char16_t character : text)
        pressMnemonic(dialog, message.hwnd, character);
    return true;
}

}  // namespace

BOOL IsDialogMessage(HWND handle, MSG* message)
{
    if (!message)
        return FALSE;
    {
        const Lock lock(coreMutex);
        const Window* dialog = findWindow(handle);
        const Window* target = findWindow(message->hwnd);
        if (!dialog || !dialog->state->isDialog() || !target || !isWithin(*target, *dialog))
            return FALSE;
    }
    switch (message->message) {
    case WM_KEYDOWN:
        return takeKey(handle, *message);
    case WM_CHAR:
        return message->wParam > u' ' && !(dialogCodeOf(*message) & (WantsCharacters | WantsAllKeys)) &&
               pressMnemonic(handle, message->hwnd, static_cast<char16_t>(message->wParam));
    case WM_SYSCHAR:
        return pressMnemonic(handle, message->hwnd, static_cast<char16_t>(message->wParam));
    case InputText:
        return takeText(handle, *message);
    default:
        return FALSE;
    }
}
