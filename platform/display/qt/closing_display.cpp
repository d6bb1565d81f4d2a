#include "closing_display.h"

namespace platform::qt {

using window::Change;

// closeInputWindows() locks the core's mutex. The core calls changed() with that mutex held, and changed() locks
// mutex_. So mutex_ must be unlocked during closeInputWindows(), or two threads could wait for each other. If
// changed() calls wake() during closeInputWindows(), changes_ increases. So the wait that follows returns at once, and
// no window is missed.
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

// Closes the window in front first, so a question is closed before the window that it blocks. One request for each
// window is enough, because a close that arrives while the program is busy stays in the core's queue.
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
