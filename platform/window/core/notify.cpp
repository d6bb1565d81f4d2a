#include "window/notify.h"

namespace platform::window {

namespace {

// Returns the parent and sets `id` to the control's id. Returns null for a window without a parent.
HWND parentOf(HWND control, int& id)
{
    const Lock lock(coreMutex);
    const Window* window = findWindow(control);
    if (!window || !window->parent)
        return nullptr;
    id = window->id;
    return window->parent->handle;
}

}  // namespace

void notifyCommand(HWND control, WORD code)
{
    int id = 0;
    if (const HWND parent = parentOf(control, id))
        SendMessageW(parent, WM_COMMAND, MAKELONG(static_cast<WORD>(id), code), reinterpret_cast<LPARAM>(control));
}

LRESULT notifyParent(HWND control, NMHDR& header)
{
    int id = 0;
    const HWND parent = parentOf(control, id);
    if (!parent)
        return 0;
    header.hwndFrom = control;
    header.idFrom = static_cast<UINT_PTR>(id);
    return SendMessageW(parent, WM_NOTIFY, header.idFrom, reinterpret_cast<LPARAM>(&header));
}

}  // namespace platform::window
