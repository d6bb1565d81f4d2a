// change_batch.cpp - what the core has changed since the screen last looked.

#include "change_batch.h"

#include <algorithm>
#include <utility>

namespace platform::qt {

void ChangeBatch::changed(HWND window, window::Change change)
{
    const std::lock_guard guard(mutex_);
    if (change == window::Change::Idle) {
        ++idles_;
        idleCame_.notify_all();
    }
    const bool first = noted_.empty();
    if (last_ >= noted_.size() || noted_[last_].window != window) {
        const auto known =
            std::find_if(noted_.begin(), noted_.end(), [&](const Changed& noted) { return noted.window == window; });
        last_ = static_cast<std::size_t>(known - noted_.begin());
        if (known == noted_.end())
            noted_.push_back({.window = window, .changes = {}});
    }
    noted_[last_].changes.add(change);
    if (first)
        begun_();
}

void ChangeBatch::textChanged(HWND window, std::u16string_view)
{
    changed(window, window::Change::Text);  // the text itself is read when it is shown
}

std::vector<Changed> ChangeBatch::take()
{
    const std::lock_guard guard(mutex_);
    return std::exchange(noted_, {});
}

void ChangeBatch::waitUntil(const std::function<bool()>& rests, std::chrono::milliseconds patience)
{
    const auto end = std::chrono::steady_clock::now() + patience;
    std::unique_lock lock(mutex_);
    while (true) {
        const unsigned seen = idles_;
        // The core's lock comes before this one: it can't be asked with this one held.
        lock.unlock();
        if (rests())
            return;
        lock.lock();
        if (!idleCame_.wait_until(lock, end, [&] { return idles_ != seen; }))
            return;
    }
}

}  // namespace platform::qt
