// change_batch.h - collects the changes in the window core since the screen was last updated.
//
// Any thread of the program adds changes. For each update of the screen (see screen.h), the toolkit's thread takes all
// changes and reads the windows' current state. A further change of the same window only sets a bit. So even if a text
// changes 100,000 times a second, each update shows only its latest state. This class uses no toolkit.
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
    HWND window = nullptr;  // null for Idle, Busy, Cursor and Status
    Changes changes;
};

class ChangeBatch final : public window::Display {
public:
    // `begun` is called at the first change of each batch, on the thread that made the change and with the window
    // core's mutex held. It must return at once, and must call neither the window core nor this object.
    explicit ChangeBatch(std::function<void()> begun) : begun_(std::move(begun)) {}

    void changed(HWND window, window::Change change) override;
    void textChanged(HWND window, std::u16string_view text) override;

    // Returns the batch, ordered by the first change of each window, and begins the next one.
    [[nodiscard]] std::vector<Changed> take();

    // Returns when `condition` returns true, or after `timeout`. Calls `condition` first, and again each time that a
    // thread of the program begins to wait for messages. `condition` may call the window core.
    void waitUntil(const std::function<bool()>& condition, std::chrono::milliseconds timeout);

private:
    std::function<void()> begun_;
    // Guards the members below. The window core holds its own mutex when it calls changed(), and changed() locks this
    // mutex. So a thread that holds this mutex must not call the window core. Otherwise two threads could wait for each
    // other.
    std::mutex mutex_;
    std::condition_variable idlesGrew_;
    std::vector<Changed> entries_;
    std::size_t last_ = 0;  // the entry of the last change; the next change is often of the same window
    unsigned idles_ = 0;
};

}  // namespace platform::qt
