#include "controls/button.h"

#include "controls/control_classes.h"
#include "window/focus.h"
#include "window/input.h"
#include "window/notify.h"

#include "ce/controls.h"

#include <algorithm>

namespace platform::window {

namespace {

DWORD kindOf(const Window& window) REQUIRES(coreMutex)
{
    return window.style & 0xF;
}

struct ButtonState : ClassState {
    int check = 0;

    void describe(const Window& window, WindowState& state) const REQUIRES(coreMutex) override
    {
        state.check = check;
        state.defaultButton = window.parent && window.parent->state->buttonForEnter(*window.parent) == &window;
    }

    bool acceptsFocus(const Window& window) const REQUIRES(coreMutex) override { return kindOf(window) != BS_GROUPBOX; }
};

bool isRadio(DWORD kind)
{
    return kind == BS_RADIOBUTTON || kind == BS_AUTORADIOBUTTON;
}

int highestCheck(DWORD kind)
{
    switch (kind) {
    case BS_CHECKBOX:
    case BS_AUTOCHECKBOX:
    case BS_RADIOBUTTON:
    case BS_AUTORADIOBUTTON:
        return 1;
    case BS_3STATE:
    case BS_AUTO3STATE:
        return 2;
    default:
        return 0;
    }
}

void setCheck(Window& button, WPARAM wanted) REQUIRES(coreMutex)
{
    const DWORD kind = kindOf(button);
    const int check = static_cast<int>(std::min<WPARAM>(wanted, static_cast<WPARAM>(highestCheck(kind))));
    // In a group of radio buttons, Tab moves only to the checked button.
    if (isRadio(kind))
        button.style = check ? button.style | WS_TABSTOP : button.style & ~WS_TABSTOP;
    auto& state = stateOf<ButtonState>(button);
    if (state.check == check)
        return;
    state.check = check;
    announce(button, Change::Check);
}

void checkAloneInGroup(Window& button) REQUIRES(coreMutex)
{
    setCheck(button, BST_CHECKED);
    for (Window* other : groupOf(button))
        if (other != &button && isAutoRadioButton(*other))
            setCheck(*other, BST_UNCHECKED);
}

// Presses the button. The check state changes before the parent is notified, so the parent reads the new state.
void press(HWND handle)
{
    {
        const Lock lock(coreMutex);
        Window* button = findWindow(handle);
        if (!button || !takesInputOf(*button) || kindOf(*button) == BS_GROUPBOX)
            return;
        const auto check = static_cast<WPARAM>(stateOf<ButtonState>(*button).check);
        switch (kindOf(*button)) {
        case BS_AUTOCHECKBOX:
            setCheck(*button, check == 0 ? BST_CHECKED : BST_UNCHECKED);
            break;
        case BS_AUTO3STATE:
            setCheck(*button, (check + 1) % 3);
            break;
        case BS_AUTORADIOBUTTON:
            checkAloneInGroup(*button);
            break;
        default:
            break;
        }
    }
    notifyCommand(handle, BN_CLICKED);
}

LRESULT dialogCode(DWORD kind)
{
    if (kind == BS_GROUPBOX)
        return IsStatic;
    if (isRadio(kind))
        return IsButton | IsRadioButton;
    return kind <= BS_DEFPUSHBUTTON ? IsButton | IsPushButton : IsButton;
}

LRESULT buttonProcedure(HWND handle, UINT message, WPARAM wParam, LPARAM lParam)
{
    switch (message) {
    case BM_CLICK:
    case InputClick:
    case InputDoubleClick:
        press(handle);
        return 0;
    case WM_KEYDOWN:
        if (wParam == VK_SPACE)
            press(handle);
        return 0;
    case BM_GETCHECK:
    case BM_SETCHECK:
    case WM_GETDLGCODE:
        break;
    default:
        return DefWindowProcW(handle, message, wParam, lParam);
    }
    const Lock lock(coreMutex);
    Window* button = findWindow(handle);
    if (!button)
        return 0;
    if (message == BM_GETCHECK)
        return stateOf<ButtonState>(*button).check;
    if (message == WM_GETDLGCODE)
        return dialogCode(kindOf(*button));
    setCheck(*button, wParam);
    return 0;
}

}  // namespace

bool isPushButton(const Window& window)
{
    return window.windowClass->kind == WindowKind::Button && kindOf(window) <= BS_DEFPUSHBUTTON;
}

bool isDefaultPushButton(const Window& window)
{
    return window.windowClass->kind == WindowKind::Button && kindOf(window) == BS_DEFPUSHBUTTON;
}

bool isAutoRadioButton(const Window& window)
{
    return window.windowClass->kind == WindowKind::Button && kindOf(window) == BS_AUTORADIOBUTTON;
}

WindowClass buttonClass()
{
    return {u"Button", buttonProcedure, WindowKind::Button, true, makeStateOf<ButtonState>, 0};
}

}  // namespace platform::window
