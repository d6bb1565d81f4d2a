#include "dialog.h"

#include "controls/button.h"
#include "dialog_state.h"
#include "window/focus.h"
#include "window/window_class.h"
#include "window/window_life.h"

#include "resource/resource_file.h"

#include "ce/controls.h"

#include <algorithm>

namespace platform::window {

namespace {

struct Size {
    int width;
    int height;
};

Size sizeOf(const DialogLaunch& launch)
{
    const DialogTemplate& layout = launch.layout;
    if (launch.inPixels)
        return {layout.width, layout.height};
    return {horizontalPixels(layout.width), verticalPixels(layout.height)};
}

// Returns the position of the dialog. With DS_CENTER the dialog is in the middle of its owner. Otherwise it is at the
// template's position in the owner's client area. Without an owner, the screen is used instead.
POINT positionFor(const DialogLaunch& launch, Size size)
{
    const Lock lock(coreMutex);
    Window* owner = findWindow(launch.owner);
    const RECT area = owner ? topLevelOf(*owner).rectangle : RECT{0, 0, ScreenWidth, ScreenHeight};
    if (launch.layout.style & DS_CENTER)
        return {std::max((area.left + area.right - size.width) / 2, 0),
                std::max((area.top + area.bottom - size.height) / 2, 0)};
    return {area.left + horizontalPixels(launch.layout.x), area.top + verticalPixels(launch.layout.y)};
}

// Do the classes of all controls exist? If the class of a control doesn't exist, the dialog isn't opened. Without that
// control it would be incomplete, and the user could misunderstand it.
bool knowsClasses(const DialogTemplate& layout)
{
    const Lock lock(coreMutex);
    return std::ranges::all_of(layout.controls, [](const ControlTemplate& control) REQUIRES(coreMutex) {
        return findClass(control.className) != nullptr;
    });
}

HWND makeDialogWindow(const DialogLaunch& launch, bool modal, HWND ownerToEnable)
{
    const Size size = sizeOf(launch);
    const POINT position = positionFor(launch, size);
    Creation creation;
    creation.className = DialogClassName;
    creation.title = launch.layout.title;
    creation.style = (launch.layout.style & ~(WS_VISIBLE | WS_CHILD)) | WS_POPUP;
    creation.exStyle = launch.layout.exStyle;
    creation.x = position.x;
    creation.y = position.y;
    creation.width = size.width;
    creation.height = size.height;
    creation.parent = launch.owner;
    creation.instance = launch.instance;
    auto state = std::make_unique<DialogState>();
    state->modal = modal;
    state->ownerToEnable = ownerToEnable;
    state->messageBox = launch.messageBox;
    state->messageBoxType = launch.messageBoxType;
    state->questionKind = launch.questionKind;
    creation.state = std::move(state);
    return createWindow(std::move(creation));
}

bool makeControl(const DialogLaunch& launch, const ControlTemplate& control, HWND dialog)
{
    Creation creation;
    creation.className = control.className;
    creation.title = control.text;
    creation.style = control.style | WS_CHILD;
    creation.exStyle = control.exStyle;
    creation.x = launch.inPixels ? control.x : horizontalPixels(control.x);
    creation.y = launch.inPixels ? control.y : verticalPixels(control.y);
    creation.width = launch.inPixels ? control.width : horizontalPixels(control.width);
    creation.height = launch.inPixels ? control.height : verticalPixels(control.height);
    creation.parent = dialog;
    creation.id = control.id;
    creation.iconId = control.iconId;
    creation.instance = launch.instance;
    return createWindow(std::move(creation)) != nullptr;
}

// Sets the dialog's procedure, which receives the dialog's messages from then on. Also makes the first control with
// BS_DEFPUSHBUTTON the default button. Returns the first control that has WS_TABSTOP and accepts the focus, or null if
// there is none.
HWND attachProcedure(HWND handle, DLGPROC procedure)
{
    const Lock lock(coreMutex);
    const Window* window = findWindow(handle);
    DialogState* dialog = findDialog(window);
    if (!dialog)
        return nullptr;
    dialog->procedure = procedure;
    for (const Window* control : window->children)
        if (isDefaultPushButton(*control) && dialog->defaultId == 0)
            dialog->defaultId = control->id;
    const Window* first = nextTabStop(*window, nullptr, false);
    return first ? first->handle : nullptr;
}

bool hasFocusWithin(HWND handle)
{
    const Lock lock(coreMutex);
    const Window* dialog = findWindow(handle);
    const Window* focused = findWindow(currentThread().focus);
    return dialog && focused && isWithin(*focused, *dialog);
}

bool hasEnded(HWND handle)
{
    const Lock lock(coreMutex);
    const Window* window = findWindow(handle);
    return !window || window->dying || findDialog(window)->ended;
}

// Sends WM_INITDIALOG. If the procedure returns nonzero, sets the focus to the first tab stop. A procedure that returns
// 0 should have set the focus to a control of the dialog. If it hasn't, this function sets the focus nevertheless.
void initialize(const DialogLaunch& launch, HWND dialog)
{
    const HWND first = attachProcedure(dialog, launch.procedure);
    const LRESULT wantsFocus = SendMessageW(dialog, WM_INITDIALOG, reinterpret_cast<WPARAM>(first), launch.parameter);
    if (hasEnded(dialog) || !first || (!wantsFocus && hasFocusWithin(dialog)))
        return;
    SetFocus(first);
    SendMessageW(first, EM_SETSEL, 0, -1);
}

// Makes the dialog and sends WM_INITDIALOG, but doesn't show the dialog. Returns null and sets the last error if the
// dialog can't be made.
HWND openHidden(const DialogLaunch& launch, bool modal, HWND ownerToEnable)
{
    if (!knowsClasses(launch.layout)) {
        SetLastError(ERROR_CANNOT_FIND_WND_CLASS);
        return nullptr;
    }
    const HWND dialog = makeDialogWindow(launch, modal, ownerToEnable);
    if (!dialog)
        return nullptr;
    for (const ControlTemplate& control : launch.layout.controls) {
        if (!makeControl(launch, control, dialog)) {
            DestroyWindow(dialog);
            return nullptr;
        }
    }
    initialize(launch, dialog);
    return dialog;
}

// Disables the owner's top-level window and returns it. Returns null if that window is disabled already or doesn't
// exist.
HWND disableOwner(HWND handle)
{
    HWND top = nullptr;
    {
        const Lock lock(coreMutex);
        Window* owner = findWindow(handle);
        if (!owner || hasStyle(topLevelOf(*owner), WS_DISABLED))
            return nullptr;
        top = topLevelOf(*owner).handle;
    }
    EnableWindow(top, FALSE);
    return top;
}

// Handles messages for all windows of the thread until the dialog has ended. WM_QUIT ends this loop too. In that case
// this function posts WM_QUIT again, so that the caller's message loop also ends.
void serve(HWND dialog)
{
    while (!hasEnded(dialog)) {
        MSG message = {};
        const BOOL got = GetMessageW(&message, nullptr, 0, 0);
        if (got == 0)
            PostQuitMessage(static_cast<int>(message.wParam));
        if (got <= 0)
            return;
        if (IsDialogMessage(dialog, &message))
            continue;
        TranslateMessage(&message);
        DispatchMessageW(&message);
    }
}

INT_PTR resultOf(HWND handle)
{
    const Lock lock(coreMutex);
    const DialogState* dialog = findDialog(findWindow(handle));
    return dialog && dialog->ended ? dialog->result : 0;
}

}  // namespace

INT_PTR runModal(const DialogLaunch& launch)
{
    // The owner is disabled before WM_INITDIALOG is sent. The handler of that message may show windows, and the owner
    // must accept no command meanwhile.
    const HWND ownerToEnable = disableOwner(launch.owner);
    const HWND dialog = openHidden(launch, true, ownerToEnable);
    if (!dialog) {
        if (ownerToEnable)
            EnableWindow(ownerToEnable, TRUE);
        return -1;
    }
    if (!hasEnded(dialog))
        ShowWindow(dialog, SW_SHOW);
    serve(dialog);
    const INT_PTR result = resultOf(dialog);
    DestroyWindow(dialog);
    return result;
}

HWND openModeless(const DialogLaunch& launch)
{
    const HWND dialog = openHidden(launch, false, nullptr);
    if (dialog && (launch.layout.style & WS_VISIBLE))
        ShowWindow(dialog, SW_SHOW);
    return IsWindow(dialog) ? dialog : nullptr;
}

namespace {

// Accepts only templates in the resources, because the size of any other template isn't known. Returns nothing and sets
// the last error if the address isn't in the resources, the template is damaged or the procedure is null.
std::optional<DialogLaunch> launchFrom(HINSTANCE instance, const void* dialogTemplate, HWND owner, DLGPROC procedure,
                                       LPARAM parameter)
{
    const std::span<const std::byte> bytes = resource::resourceAt(dialogTemplate);
    auto layout = readDialogTemplate(bytes);
    if (!layout || !procedure) {
        SetLastError(bytes.empty() ? ERROR_RESOURCE_DATA_NOT_FOUND : ERROR_INVALID_PARAMETER);
        return std::nullopt;
    }
    DialogLaunch launch;
    launch.layout = std::move(*layout);
    launch.instance = instance;
    launch.owner = owner;
    launch.procedure = procedure;
    launch.parameter = parameter;
    return launch;
}

}  // namespace

}  // namespace platform::window

using namespace platform::window;

INT_PTR DialogBoxIndirectParamW(HINSTANCE instance, const void* dialogTemplate, HWND owner, DLGPROC procedure,
                                LPARAM parameter)
{
    if (owner && !IsWindow(owner))
        return fail(ERROR_INVALID_WINDOW_HANDLE);
    const auto launch = launchFrom(instance, dialogTemplate, owner, procedure, parameter);
    return launch ? runModal(*launch) : -1;
}

HWND CreateDialogIndirectParamW(HINSTANCE instance, const void* dialogTemplate, HWND owner, DLGPROC procedure,
                                LPARAM parameter)
{
    const auto launch = launchFrom(instance, dialogTemplate, owner, procedure, parameter);
    return launch ? openModeless(*launch) : nullptr;
}

BOOL EndDialog(HWND handle, INT_PTR result)
{
    HWND ownerToEnable = nullptr;
    {
        const Lock lock(coreMutex);
        const Window* window = findWindow(handle);
        if (!window)
            return fail(ERROR_INVALID_WINDOW_HANDLE);
        DialogState* dialog = findDialog(window);
        if (!dialog || !dialog->modal)
            return fail(ERROR_ACCESS_DENIED);
        dialog->ended = true;
        dialog->result = result;
        ownerToEnable = dialog->takeOwnerToEnable();
    }
    if (ownerToEnable)
        EnableWindow(ownerToEnable, TRUE);
    ShowWindow(handle, SW_HIDE);
    PostMessageW(handle, WM_NULL, 0, 0);  // wakes the dialog's message loop, which then ends
    return TRUE;
}
