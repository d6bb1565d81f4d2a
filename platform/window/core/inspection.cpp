#include "window/core.h"

#include <algorithm>

namespace platform::window {

bool readWindowLocked(HWND handle, WindowState& state)
{
    Window* window = findWindow(handle);
    if (!window)
        return false;
    state = {};
    state.window = handle;
    state.parent = window->parent ? window->parent->handle : window->owner;
    state.thread = window->thread->id;
    state.kind = window->windowClass->kind;
    if (state.kind == WindowKind::Main && window->parent)
        state.kind = WindowKind::Other;
    state.className = window->windowClass->name;
    state.text = window->text;
    state.id = window->id;
    state.style = window->style;
    state.exStyle = window->exStyle;
    state.rectangle = window->rectangle;
    state.visible = hasStyle(*window, WS_VISIBLE) && !isToBeDestroyed(*window);
    state.enabled = !hasStyle(*window, WS_DISABLED);
    state.focused = window->thread->focus == handle;
    state.iconId = window->iconId;
    window->state->describe(*window, state);
    return true;
}

bool readWindow(HWND window, WindowState& state)
{
    const Lock lock(coreMutex);
    return readWindowLocked(window, state);
}

std::vector<HWND> childrenOfLocked(HWND handle)
{
    std::vector<HWND> children;
    if (const Window* window = findWindow(handle))
        std::ranges::transform(window->children, std::back_inserter(children), &Window::handle);
    return children;
}

std::vector<HWND> childrenOf(HWND window)
{
    const Lock lock(coreMutex);
    return childrenOfLocked(window);
}

std::vector<HWND> topLevelWindows()
{
    const Lock lock(coreMutex);
    return core().topLevel;
}

}  // namespace platform::window
