#include "closing_display.h"

namespace platform::qt {

using window::Change;

// closeInputWindows() locks the window core's mutex. The window core calls changed() with that mutex held, and
// changed() locks mutex_. So mutex_ must be unlocked during closeInputWindows(), or two threads could wait for each
// other. changed() calls wake(), which increases changes_. So if a window appears during closeInputWindows(), the wait
// below returns at once, and no window is missed.
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

// Asks each visible and enabled window to close, the window in front first. So a question is closed before the window
// that it blocks. One request for each window is enough, because a request to close stays in the window core's queue if
// the program is busy.
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
