#include "change_batch.h"

#include <algorithm>
#include <utility>

namespace platform::qt {

void ChangeBatch::changed(HWND window, window::Change change)
{
    const std::lock_guard guard(mutex_);
    if (change == window::Change::Idle) {
        ++idles_;
        idlesGrew_.notify_all();
    }
    const bool isFirst = entries_.empty();
    if (last_ >= entries_.size() || entries_[last_].window != window) {
        const auto known = std::ranges::find_if(entries_, [&](const Changed& entry) { return entry.window == window; });
        last_ = static_cast<std::size_t>(known - entries_.begin());
        if (known == entries_.end())
            entries_.push_back({.window = window, .changes = {}});
    }
    entries_[last_].changes.add(change);
    if (isFirst)
        begun_();
}

void ChangeBatch::textChanged(HWND window, std::u16string_view)
{
    changed(window, window::Change::Text);  // the screen reads the text from the window core when it shows the text
}

std::vector<Changed> ChangeBatch::take()
{
    const std::lock_guard guard(mutex_);
    return std::exchange(entries_, {});
}

void ChangeBatch::waitUntil(const std::function<bool()>& condition, std::chrono::milliseconds timeout)
{
    const auto end = std::chrono::steady_clock::now() + timeout;
    std::unique_lock lock(mutex_);
    while (true) {
        // If Change::Idle is reported while `condition` runs, idles_ increases. So the wait below returns at once.
        const unsigned seen = idles_;
        lock.unlock();
        if (condition())
            return;
        lock.lock();
        if (!idlesGrew_.wait_until(lock, end, [&] { return idles_ != seen; }))
            return;
    }
}

}  // namespace platform::qt
