// Moves the focus and changes the active window. Each thread has its own focus and its own active window. So these
// functions never wait for another thread.
#include "window/focus.h"

#include <algorithm>

namespace platform::window {

bool acceptsFocus(const Window& window)
{
    return window.windowClass->takesFocus && window.state->acceptsFocus(window) && hasStyle(window, WS_VISIBLE) &&
           takesInputOf(window);
}

Window* nextTabStop(const Window& dialog, const Window* from, bool backward)
{
    const std::vector<Window*>& controls = dialog.children;
    const std::size_t count = controls.size();
    const auto at = std::ranges::find(controls, from);
    std::size_t index =
        at == controls.end() ? (backward ? 0 : count - 1) : static_cast<std::size_t>(at - controls.begin());
    for (std::size_t step = 0; step < count; ++step) {
        index = backward ? (index + count - 1) % count : (index + 1) % count;
        if (hasStyle(*controls[index], WS_TABSTOP) && acceptsFocus(*controls[index]))
            return controls[index];
    }
    return nullptr;
}

std::vector<Window*> groupOf(Window& control)
{
    if (!control.parent)
        return {&control};
    const std::vector<Window*>& all = control.parent->children;
    const auto startsGroup = [](const Window* window) REQUIRES(coreMutex) { return hasStyle(*window, WS_GROUP); };
    const auto self = std::ranges::find(all, &control);
    auto first = self;
    while (first != all.begin() && !startsGroup(*first))
        --first;
    return {first, std::find_if(self + 1, all.end(), startsGroup)};
}

Window* nextInGroup(Window& control, bool backward)
{
    const std::vector<Window*> group = groupOf(control);
    const std::size_t count = group.size();
    auto index = static_cast<std::size_t>(std::ranges::find(group, &control) - group.begin());
    do
        index = backward ? (index + count - 1) % count : (index + 1) % count;
    while (group[index] != &control && !acceptsFocus(*group[index]));
    return group[index];
}

namespace {

// Returns the window that gets the focus when `top` becomes active. If `top` isn't a dialog, a control without
// WS_TABSTOP can get the focus too. The tree in the main window is such a control. Without this rule the keyboard
// couldn't reach the tree, because the main window's message loop doesn't handle Tab.
HWND focusFor(Window& top) REQUIRES(coreMutex)
{
    Window* last = findWindow(top.lastFocus);
    if (last && isWithin(*last, top) && acceptsFocus(*last))
        return last->handle;
    if (Window* first = nextTabStop(top, nullptr, false))
        return first->handle;
    if (!top.state->isDialog()) {
        for (const Window* child : top.children) {
            if (acceptsFocus(*child))
                return child->handle;
        }
    }
    return top.handle;
}

}  // namespace

void activate(HWND topLevel)
{
    Lock lock(coreMutex);
    Thread& self = currentThread();
    Window* top = findWindow(topLevel);
    if (!top || top->thread != &self || top->dying)
        return;
    std::vector<HWND>& order = core().topLevel;
    std::erase(order, topLevel);
    order.insert(order.begin(), topLevel);
    announce(*top, Change::Foreground);
    const HWND before = std::exchange(self.active, topLevel);
    const HWND focus = takesInputOf(*top) ? focusFor(*top) : nullptr;
    lock.unlock();
    if (before != topLevel) {
        if (before)
            SendMessageW(before, WM_ACTIVATE, 0, reinterpret_cast<LPARAM>(topLevel));
        SendMessageW(topLevel, WM_ACTIVATE, 1, reinterpret_cast<LPARAM>(before));
    }
    if (focus)
        SetFocus(focus);
}

void moveFocusOff(HWND window)
{
    Lock lock(coreMutex);
    const Thread& self = currentThread();
    Window* left = findWindow(window);
    const Window* focused = findWindow(self.focus);
    if (!left || left->thread != &self || !focused || !isWithin(*focused, *left))
        return;
    Window& top = topLevelOf(*left);
    const Window* next = left != &top && !top.dying ? nextTabStop(top, left, false) : nullptr;
    const HWND target = next ? next->handle : nullptr;
    lock.unlock();
    SetFocus(target);
}

}  // namespace platform::window

using namespace platform::window;

HWND SetFocus(HWND window)
{
    Lock lock(coreMutex);
    Thread& self = currentThread();
    Window* wanted = window ? findWindow(window) : nullptr;
    if (window && !wanted) {
        SetLastError(ERROR_INVALID_WINDOW_HANDLE);
        return nullptr;
    }
    // Input for a disabled window is dropped. If a disabled window had the focus, all keys would be lost.
    if (wanted && (wanted->thread != &self || wanted->dying || !takesInputOf(*wanted))) {
        SetLastError(ERROR_ACCESS_DENIED);
        return nullptr;
    }
    const HWND before = std::exchange(self.focus, window);
    if (wanted)
        topLevelOf(*wanted).lastFocus = window;
    if (before != window) {
        for (const Window* changed : {findWindow(before), wanted}) {
            if (changed)
                announce(*changed, Change::Focus);
        }
    }
    lock.unlock();
    if (before != window) {
        if (before)
            SendMessageW(before, WM_KILLFOCUS, reinterpret_cast<WPARAM>(window), 0);
        if (window && GetFocus() == window)
            SendMessageW(window, WM_SETFOCUS, reinterpret_cast<WPARAM>(before), 0);
    }
    return before;
}

HWND GetFocus()
{
    const Lock lock(coreMutex);
    return currentThread().focus;
}

BOOL SetForegroundWindow(HWND window)
{
    Lock lock(coreMutex);
    Window* found = findWindow(window);
    if (!found)
        return fail(ERROR_INVALID_WINDOW_HANDLE);
    const Window& top = topLevelOf(*found);
    announce(top, Change::Foreground);
    const HWND handle = top.handle;
    lock.unlock();
    activate(handle);
    return TRUE;
}
