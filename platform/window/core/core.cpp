// The table of windows, and what the other files of the core share.
#include "window/core.h"

#include <algorithm>

namespace platform::window {

void ClassState::describe(const Window&, WindowState&) const {}

bool ClassState::acceptsFocus(const Window&) const
{
    return true;
}

bool ClassState::disablesCommand(const Window&, WORD) const
{
    return false;
}

const Window* ClassState::buttonForEnter(const Window&) const
{
    return nullptr;
}

Core& core()
{
    static Core& theCore = *std::make_unique<Core>().release();
    return theCore;
}

Window& addWindow()
{
    Core& all = core();
    if (all.freeSlots.empty()) {
        all.slots.emplace_back();
        all.freeSlots.push_back(static_cast<std::uint32_t>(all.slots.size()));
    }
    const std::uint32_t slot = all.freeSlots.back();
    all.freeSlots.pop_back();
    WindowSlot& place = all.slots[slot - 1];
    place.window = std::make_unique<Window>();
    const std::uintptr_t number = (static_cast<std::uintptr_t>(++place.generation) << 32) | slot;
    place.window->handle = reinterpret_cast<HWND>(number);
    return *place.window;
}

namespace {

void forgetQueued(Thread& thread, HWND window)
{
    std::erase_if(thread.posted, [window](const MSG& message) { return message.hwnd == window; });
    std::erase_if(thread.input, [window](const Input& input) { return input.message.hwnd == window; });
    std::erase_if(thread.timers, [window](const Timer& timer) { return timer.window == window; });
    std::erase(thread.condemned, window);
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
    tell(*window.thread);  // a frame that waits for this window's messages has to see that it is gone
    wakeTurnWaiters();     // so has a send

    const auto slot = static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(handle) & 0xFFFFFFFF);
    all.slots[slot - 1].window.reset();
    all.freeSlots.push_back(slot);
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

void condemn(Window& window)
{
    window.thread->condemned.push_back(window.handle);
    announce(window, Change::Shown);
    tell(*window.thread);
}

bool isCondemned(const Window& window)
{
    return std::ranges::find(window.thread->condemned, window.handle) != window.thread->condemned.end();
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

void tell(Thread& thread)
{
    ++thread.news;
    if (thread.retrieving > 0)
        thread.newsCame.notify_all();
}

void wakeTurnWaiters()
{
    if (core().turnWaiters > 0)
        core().turnFreed.notify_all();
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
    const Lock lock = lockCore();
    core().display = display;
}

}  // namespace platform::window
