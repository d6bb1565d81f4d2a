#include "window/core.h"
#include "window/focus.h"
#include "window/input.h"

#include "text/case_folding.h"

#include <algorithm>

using namespace platform::window;

namespace {

bool isOwn(const Window& window) REQUIRES(coreMutex)
{
    return window.thread == &currentThread();
}

// Sends ParentSized to the child that follows the parent's size. Only the control for command bands follows it, and a
// window has at most one such control.
void layOutFollower(HWND parent)
{
    HWND follower = nullptr;
    {
        const Lock lock(coreMutex);
        const Window* window = findWindow(parent);
        if (!window)
            return;
        for (const Window* child : window->children)
            if (child->state->followsParentSize())
                follower = child->handle;
    }
    if (follower)
        SendMessageW(follower, ParentSized, 0, 0);
}

}  // namespace

BOOL ShowWindow(HWND handle, int show)
{
    Lock lock(coreMutex);
    Window* window = findWindow(handle);
    if (!window)
        return fail(ERROR_INVALID_WINDOW_HANDLE);
    const bool wasVisible = hasStyle(*window, WS_VISIBLE);
    const bool visible = show != SW_HIDE;
    const bool own = isOwn(*window);
    const bool topLevel = !window->parent;
    const HWND owner = window->owner;
    const bool wasActive = own && currentThread().active == handle;
    if (wasVisible != visible) {
        window->style = visible ? window->style | WS_VISIBLE : window->style & ~WS_VISIBLE;
        announce(*window, Change::Shown);
    }
    lock.unlock();
    if (!own)
        return wasVisible;  // sending a message would wait for the window's thread

    if (wasVisible != visible)
        SendMessageW(handle, WM_SHOWWINDOW, visible ? 1 : 0, 0);
    if (!visible)
        moveFocusOff(handle);
    if (topLevel && visible)
        activate(handle);
    else if (wasActive && IsWindowVisible(owner))
        activate(owner);
    return wasVisible;
}

BOOL UpdateWindow(HWND window)
{
    return IsWindow(window) ? TRUE : fail(ERROR_INVALID_WINDOW_HANDLE);
}

BOOL IsWindowVisible(HWND handle)
{
    const Lock lock(coreMutex);
    const Window* window = findWindow(handle);
    return window && isVisible(*window);
}

BOOL IsWindowEnabled(HWND handle)
{
    const Lock lock(coreMutex);
    const Window* window = findWindow(handle);
    return window && !hasStyle(*window, WS_DISABLED);
}

BOOL EnableWindow(HWND handle, BOOL enable)
{
    Lock lock(coreMutex);
    Window* window = findWindow(handle);
    if (!window)
        return fail(ERROR_INVALID_WINDOW_HANDLE);
    const bool wasDisabled = hasStyle(*window, WS_DISABLED);
    if (wasDisabled != (enable == FALSE)) {
        window->style = enable ? window->style & ~WS_DISABLED : window->style | WS_DISABLED;
        announce(*window, Change::Enabled);
        noteArrival(*window->thread);  // a queued close may be deliverable now
        const bool own = isOwn(*window);
        lock.unlock();
        if (!own) {
            PostMessageW(handle, WM_ENABLE, enable ? 1 : 0, 0);
        } else {
            SendMessageW(handle, WM_ENABLE, enable ? 1 : 0, 0);
            if (!enable)
                moveFocusOff(handle);
        }
    }
    return wasDisabled;
}

HWND GetParent(HWND handle)
{
    const Lock lock(coreMutex);
    const Window* window = findWindow(handle);
    if (!window) {
        SetLastError(ERROR_INVALID_WINDOW_HANDLE);
        return nullptr;
    }
    return window->parent ? window->parent->handle : window->owner;
}

HWND FindWindowW(const WCHAR* className, const WCHAR* title)
{
    const Lock lock(coreMutex);
    const auto fits = [](const WCHAR* wanted, const std::u16string& text) {
        return !wanted || platform::text::compareWithoutCase(wanted, text) == 0;
    };
    for (const HWND top : core().topLevel) {
        const Window* window = findWindow(top);
        if (fits(className, window->windowClass->name) && fits(title, window->text) && !window->dying)
            return top;
    }
    return nullptr;
}

BOOL SetWindowTextW(HWND window, const WCHAR* text)
{
    if (!text)
        text = u"";
    return static_cast<BOOL>(SendMessageW(window, WM_SETTEXT, 0, reinterpret_cast<LPARAM>(text)));
}

int GetWindowTextW(HWND window, WCHAR* text, int capacity)
{
    if (!text || capacity <= 0)
        return fail(ERROR_INVALID_PARAMETER);
    text[0] = 0;
    return static_cast<int>(
        SendMessageW(window, WM_GETTEXT, static_cast<WPARAM>(capacity), reinterpret_cast<LPARAM>(text)));
}

int GetWindowTextLengthW(HWND window)
{
    return static_cast<int>(SendMessageW(window, WM_GETTEXTLENGTH, 0, 0));
}

BOOL GetClientRect(HWND handle, RECT* rectangle)
{
    const Lock lock(coreMutex);
    const Window* window = findWindow(handle);
    if (!window)
        return fail(ERROR_INVALID_WINDOW_HANDLE);
    *rectangle = {0, 0, window->rectangle.right - window->rectangle.left,
                  window->rectangle.bottom - window->rectangle.top};
    return TRUE;
}

namespace {

// Returns the rectangle that the arguments of SetWindowPos ask for. Coordinates are limited to the range from -Far to
// Far, and sizes to the range from 0 to Far. So the sum of a coordinate and a size fits in a LONG.
RECT wantedRectangle(const RECT& before, int x, int y, int width, int height, UINT flags)
{
    constexpr int Far = 1 << 20;
    const bool moves = !(flags & SWP_NOMOVE);
    const bool sizes = !(flags & SWP_NOSIZE);
    const int left = std::clamp<int>(moves ? x : before.left, -Far, Far);
    const int top = std::clamp<int>(moves ? y : before.top, -Far, Far);
    return {left, top, left + std::clamp<int>(sizes ? width : before.right - before.left, 0, Far),
            top + std::clamp<int>(sizes ? height : before.bottom - before.top, 0, Far)};
}

}  // namespace

BOOL SetWindowPos(HWND handle, HWND, int x, int y, int width, int height, UINT flags)
{
    Lock lock(coreMutex);
    Window* window = findWindow(handle);
    if (!window)
        return fail(ERROR_INVALID_WINDOW_HANDLE);
    const RECT before = window->rectangle;
    const RECT after = wantedRectangle(before, x, y, width, height, flags);
    window->rectangle = after;
    width = after.right - after.left;
    height = after.bottom - after.top;
    const bool sized = width != before.right - before.left || height != before.bottom - before.top;
    if (sized || after.left != before.left || after.top != before.top)
        announce(*window, Change::Placed);
    const bool own = isOwn(*window);
    lock.unlock();
    if (sized && own) {
        const DWORD size = MAKELONG(static_cast<WORD>(width), static_cast<WORD>(height));
        SendMessageW(handle, WM_SIZE, 0, static_cast<LPARAM>(size));
        layOutFollower(handle);
    }
    if (flags & SWP_SHOWWINDOW)
        ShowWindow(handle, SW_SHOW);
    return TRUE;
}

BOOL MoveWindow(HWND window, int x, int y, int width, int height, BOOL)
{
    return SetWindowPos(window, nullptr, x, y, width, height, SWP_NOZORDER);
}
