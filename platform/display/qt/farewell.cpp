// farewell.cpp - the program's end when its desktop goes away in the middle of its work.

#include "farewell.h"

namespace platform::qt {

using window::Change;

void Farewell::closeEverything(const std::function<bool()>& hasEnded)
{
    window::setDisplay(this);
    std::unique_lock lock(mutex_);
    while (true) {
        const unsigned seen = count_;
        lock.unlock();
        closeWhatWaits();
        if (hasEnded())
            break;
        lock.lock();
        news_.wait(lock, [&] { return count_ != seen; });
    }
    window::setDisplay(nullptr);
}

// Foremost first: a question before the window that it keeps from going on. One wish a window is enough, since
// one that comes while the program works is kept.
void Farewell::closeWhatWaits()
{
    for (const HWND top : window::topLevelWindows()) {
        window::WindowState state;
        const bool waits = window::readWindow(top, state) && state.visible && state.enabled;
        if (waits && !closed_.contains(top) && window::postClose(top))
            closed_.insert(top);
    }
}

void Farewell::changed(HWND, Change change)
{
    if (change == Change::Shown || change == Change::Enabled || change == Change::Idle || change == Change::Destroyed)
        look();
}

void Farewell::textChanged(HWND, std::u16string_view) {}

void Farewell::look()
{
    {
        const std::lock_guard guard(mutex_);
        ++count_;
    }
    news_.notify_all();
}

}  // namespace platform::qt
