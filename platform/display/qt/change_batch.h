// change_batch.h - the changes in the window core since the screen was last updated.
//
// Any thread of the program adds changes. The display's thread takes them once per frame, and then reads the windows'
// current state. So a run that sets its counter 100,000 times a second updates the screen only once per frame: a
// further change of the same window only sets a bit. Uses no toolkit.
#pragma once

#include "window/display.h"

#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <vector>

namespace platform::qt {

// A set of window::Change.
class Changes {
public:
    constexpr Changes() = default;
    static constexpr Changes all() { return Changes(~0U); }

    constexpr void add(window::Change change) { bits_ |= bit(change); }
    constexpr void add(Changes changes) { bits_ |= changes.bits_; }
    constexpr bool has(window::Change change) const { return (bits_ & bit(change)) != 0; }

private:
    explicit constexpr Changes(unsigned bits) : bits_(bits) {}
    static constexpr unsigned bit(window::Change change) { return 1U << static_cast<unsigned>(change); }

    unsigned bits_ = 0;
};

struct Changed {
    HWND window = nullptr;  // null for changes that concern all windows: Idle, Busy, Cursor
    Changes changes;
};

class ChangeBatch final : public window::Display {
public:
    // `begun` is called at the first change of each batch, on the thread that made the change and under the core's
    // lock. It must return at once and call nothing of the core.
    explicit ChangeBatch(std::function<void()> begun) : begun_(std::move(begun)) {}

    void changed(HWND window, window::Change change) override;
    void textChanged(HWND window, std::u16string_view text) override;

    // Returns the batch, ordered by the first change of each window, and begins the next one.
    [[nodiscard]] std::vector<Changed> take();

    // Returns when `condition` holds, or after `timeout`. Checks it first, and again each time that a thread of the
    // program begins to wait for messages. `condition` may call the core.
    void waitUntil(const std::function<bool()>& condition, std::chrono::milliseconds timeout);

private:
    std::function<void()> begun_;
    // Guards all below. Never locked around a call of the core, which holds its lock when it calls changed().
    std::mutex mutex_;
    std::condition_variable idlesGrew_;
    std::vector<Changed> entries_;
    std::size_t last_ = 0;  // the entry of the last change, which the next change often repeats
    unsigned idles_ = 0;
};

}  // namespace platform::qt
