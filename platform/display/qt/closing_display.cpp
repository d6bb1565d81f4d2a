#include "closing_display.h"

namespace platform::qt {

using window::Change;

// A change that comes while closeInputWindows() runs is counted, so the wait returns at once and no window is missed.
// The mutex is free meanwhile: the core calls changed() under its lock, and closeInputWindows() takes that lock.
void ClosingDisplay::closeUntil(const std::function<bool()>& hasEnded)
{
    window::setDisplay(this);
    std::unique_lock lock(mutex_);
    while (true) {
        const unsigned seen = changes_;
        lock.unlock();
        closeInputWindows();
        if (hasEnded())
            break;
        lock.lock();
        changesGrew_.wait(lock, [&] { return changes_ != seen; });
    }
    window::setDisplay(nullptr);
}

// The window in front comes first, so a question is closed before the window that it blocks. One request for each
// window is enough, because the core keeps a request that comes while the program works.
void ClosingDisplay::closeInputWindows()
{
    for (const HWND top : window::topLevelWindows()) {
        window::WindowState state;
        const bool takesInput = window::readWindow(top, state) && state.visible && state.enabled;
        if (takesInput && !closed_.contains(top) && (window::postClose(top) || window::postRefusal(top)))
            closed_.insert(top);
    }
}

void ClosingDisplay::changed(HWND, Change change)
{
    if (change == Change::Shown || change == Change::Enabled || change == Change::Idle || change == Change::Destroyed)
        wake();
}

void ClosingDisplay::textChanged(HWND, std::u16string_view) {}

void ClosingDisplay::wake()
{
    {
        const std::lock_guard guard(mutex_);
        ++changes_;
    }
    changesGrew_.notify_all();
}

}  // namespace platform::qt
