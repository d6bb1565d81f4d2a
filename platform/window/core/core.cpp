#include "window/core.h"

#include <algorithm>

namespace platform::window {

kernel::Mutex coreMutex;

Core& core()
{
    static Core& theCore = *std::make_unique<Core>().release();
    return theCore;
}

Window* findWindow(HWND handle)
{
    Core& all = core();
    return all.windows[all.windows.find(reinterpret_cast<std::uintptr_t>(handle))]
        .get();  // find() returns 0 if no window has the handle; slot 0 holds null
}

Window& addWindow()
{
    Core& all = core();
    const auto number = all.windows.add(std::make_unique<Window>());
    Window& window = *all.windows[number];
    window.handle = reinterpret_cast<HWND>(all.windows.keyOf(number));
    return window;
}

namespace {

void forgetQueued(Thread& thread, HWND window) REQUIRES(coreMutex)
{
    std::erase_if(thread.posted, [window](const MSG& message) { return message.hwnd == window; });
    std::erase_if(thread.input, [window](const Input& input) { return input.message.hwnd == window; });
    std::erase_if(thread.timers, [window](const Timer& timer) { return timer.window == window; });
    std::erase(thread.toDestroy, window);
    if (thread.focus == window)
        thread.focus = nullptr;
    if (thread.active == window)
        thread.active = nullptr;
}

}  // namespace

void removeWindow(Window& window)
{
    while (!window.children.empty())
        removeWindow(*window.children.back());
    Core& all = core();
    const HWND handle = window.handle;
    forgetQueued(*window.thread, handle);
    if (window.parent)
        std::erase(window.parent->children, &window);
    else
        std::erase(all.topLevel, handle);
    announce(window, Change::Destroyed);
    // A call of GetMessageW that has this window as its filter may be waiting for a message. A send to this window may
    // be waiting for the turn of the window's thread (see core.h). Both calls must wake up and fail, because the window
    // no longer exists.
    noteArrival(*window.thread);
    wakeTurnWaiters();

    (void)all.windows.remove(all.windows.find(reinterpret_cast<std::uintptr_t>(handle)));
}

Window* findChild(const Window& parent, int id)
{
    const auto found = std::ranges::find(parent.children, id, &Window::id);
    return found == parent.children.end() ? nullptr : *found;
}

bool isWithin(const Window& window, const Window& ancestor)
{
    for (const Window* at = &window; at; at = at->parent)
        if (at == &ancestor)
            return true;
    return false;
}

Window& topLevelOf(Window& window)
{
    Window* at = &window;
    while (at->parent)
        at = at->parent;
    return *at;
}

bool isVisible(const Window& window)
{
    for (const Window* at = &window; at; at = at->parent)
        if (!hasStyle(*at, WS_VISIBLE))
            return false;
    return true;
}

bool takesInputOf(const Window& window)
{
    for (const Window* at = &window; at; at = at->parent)
        if (hasStyle(*at, WS_DISABLED))
            return false;
    return true;
}

void destroyLater(Window& window)
{
    window.thread->toDestroy.push_back(window.handle);
    announce(window, Change::Shown);
    noteArrival(*window.thread);
}

bool isToBeDestroyed(const Window& window)
{
    return std::ranges::find(window.thread->toDestroy, window.handle) != window.thread->toDestroy.end();
}

void announce(const Window& window, Change change)
{
    if (Display* display = core().display)
        display->changed(window.handle, change);
}

void announceGlobal(Change change)
{
    if (Display* display = core().display)
        display->changed(nullptr, change);
}

void noteArrival(Thread& thread)
{
    ++thread.arrivals;
    if (thread.retrieving > 0)
        thread.arrived.notifyAll();
}

void wakeTurnWaiters()
{
    if (core().turnWaiters > 0)
        core().turnFreed.notifyAll();
}

void setText(Window& window, std::u16string_view text)
{
    if (window.text == text)
        return;
    window.text.assign(text);
    announceText(window);
}

void announceText(const Window& window)
{
    if (Display* display = core().display)
        display->textChanged(window.handle, window.text);
}

int fail(DWORD error)
{
    SetLastError(error);
    return 0;
}

void setDisplay(Display* display)
{
    const Lock lock(coreMutex);
    core().display = display;
}

}  // namespace platform::window
