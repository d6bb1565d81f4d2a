#include "dialog_state.h"
#include "dialogs/dialog_class.h"
#include "window/focus.h"
#include "window/window_life.h"

#include "ce/controls.h"

#include <algorithm>

namespace platform::window {

namespace {

DLGPROC procedureOf(HWND handle)
{
    const Lock lock(coreMutex);
    const DialogState* dialog = findDialog(findWindow(handle));
    return dialog ? dialog->procedure : nullptr;
}

// Closing a dialog has the effect of Cancel. If Cancel is disabled, the dialog doesn't close.
void closeAsCancel(HWND handle)
{
    HWND control = nullptr;
    {
        const Lock lock(coreMutex);
        Window* dialog = findWindow(handle);
        const Window* cancel = dialog ? findChild(*dialog, IDCANCEL) : nullptr;
        if (!dialog || (cancel && hasStyle(*cancel, WS_DISABLED)))
            return;
        control = cancel ? cancel->handle : nullptr;
    }
    PostMessageW(handle, WM_COMMAND, MAKELONG(IDCANCEL, BN_CLICKED), reinterpret_cast<LPARAM>(control));
}

// Handles DM_SETDEFID. Makes the control with that id the default button. If no control has the id, the dialog has no
// default button afterwards. `id` can be any value, because a program may send a private message that has the same
// number as DM_SETDEFID. The wParam of that message then arrives here as `id`.
LRESULT setDefaultButton(const Window& window, DialogState& dialog, int id) REQUIRES(coreMutex)
{
    dialog.defaultId = findChild(window, id) ? id : 0;
    announce(window, Change::Focus);
    return TRUE;
}

LRESULT defaultButton(const DialogState& dialog)
{
    constexpr WORD HasDefault = 0x534B;
    const int id = dialog.defaultId;
    return id ? static_cast<LRESULT>(MAKELONG(static_cast<WORD>(id), HasDefault)) : 0;
}

LRESULT moveIntoScreen(Window& dialog) REQUIRES(coreMutex)
{
    const RECT before = dialog.rectangle;
    const LONG x = std::max(std::min(before.left, ScreenWidth - (before.right - before.left)), 0);
    const LONG y = std::max(std::min(before.top, ScreenHeight - (before.bottom - before.top)), 0);
    dialog.rectangle = {x, y, x + before.right - before.left, y + before.bottom - before.top};
    if (x != before.left || y != before.top)
        announce(dialog, Change::Placed);
    return TRUE;
}

LRESULT moveFocus(HWND handle, WPARAM wParam, LPARAM lParam)
{
    HWND target = reinterpret_cast<HWND>(wParam);
    if (LOWORD(static_cast<std::uint64_t>(lParam)) == 0) {
        const Lock lock(coreMutex);
        Window* dialog = findWindow(handle);
        const Window* next = dialog ? nextTabStop(*dialog, findWindow(currentThread().focus), wParam != 0) : nullptr;
        target = next ? next->handle : nullptr;
    }
    if (target) {
        SetFocus(target);
        SendMessageW(target, EM_SETSEL, 0, -1);
    }
    return 0;
}

LRESULT defaultDialogProcedure(HWND handle, UINT message, WPARAM wParam, LPARAM lParam)
{
    switch (message) {
    case WM_CLOSE:
        closeAsCancel(handle);
        return 0;
    case WM_NEXTDLGCTL:
        return moveFocus(handle, wParam, lParam);
    case DM_GETDEFID:
    case DM_SETDEFID:
    case DM_REPOSITION:
        break;
    default:
        return DefWindowProcW(handle, message, wParam, lParam);
    }
    const Lock lock(coreMutex);
    Window* window = findWindow(handle);
    DialogState* dialog = findDialog(window);
    if (!dialog)
        return 0;
    if (message == DM_GETDEFID)
        return defaultButton(*dialog);
    if (message == DM_SETDEFID)
        return setDefaultButton(*window, *dialog, static_cast<int>(wParam));
    return moveIntoScreen(*window);
}

// Calls the program's dialog procedure. For WM_INITDIALOG, returns the procedure's result. For any other message, a
// nonzero result of the procedure means that it handled the message. In that case dialogProcedure returns 0. Otherwise
// it calls the default procedure and returns the result of that call.
LRESULT dialogProcedure(HWND handle, UINT message, WPARAM wParam, LPARAM lParam)
{
    if (const DLGPROC procedure = procedureOf(handle)) {
        const INT_PTR handled = procedure(handle, message, wParam, lParam);
        if (message == WM_INITDIALOG)
            return handled;
        if (handled)
            return 0;
    }
    return defaultDialogProcedure(handle, message, wParam, lParam);
}

}  // namespace

WindowClass dialogClass()
{
    return {std::u16string(DialogClassName), dialogProcedure, WindowKind::Dialog, false, nullptr, 0};
}

}  // namespace platform::window

using namespace platform::window;

HWND GetDlgItem(HWND handle, int id)
{
    const Lock lock(coreMutex);
    Window* dialog = findWindow(handle);
    const Window* control = dialog ? findChild(*dialog, id) : nullptr;
    if (!control)
        SetLastError(dialog ? ERROR_CONTROL_ID_NOT_FOUND : ERROR_INVALID_WINDOW_HANDLE);
    return control ? control->handle : nullptr;
}

LRESULT SendDlgItemMessageW(HWND dialog, int id, UINT message, WPARAM wParam, LPARAM lParam)
{
    const HWND control = GetDlgItem(dialog, id);
    return control ? SendMessageW(control, message, wParam, lParam) : 0;
}

BOOL SetDlgItemTextW(HWND dialog, int id, const WCHAR* text)
{
    const HWND control = GetDlgItem(dialog, id);
    return control ? SetWindowTextW(control, text) : FALSE;
}

UINT GetDlgItemTextW(HWND dialog, int id, WCHAR* text, int capacity)
{
    if (!text || capacity <= 0)
        return static_cast<UINT>(fail(ERROR_INVALID_PARAMETER));
    text[0] = 0;
    const HWND control = GetDlgItem(dialog, id);
    return control ? static_cast<UINT>(GetWindowTextW(control, text, capacity)) : 0;
}
