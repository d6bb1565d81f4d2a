// change_batch.h - what the core has changed since the screen last looked, the last value of each property.
//
// The core's threads note, the desktop's thread takes. Noting is a short search in a short list, so that a
// run that sets its counter 100,000 times a second costs the screen nothing. Knows nothing of the toolkit.
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
    [[nodiscard]] constexpr bool has(window::Change change) const { return (bits_ & bit(change)) != 0; }

private:
    explicit constexpr Changes(unsigned bits) : bits_(bits) {}
    static constexpr unsigned bit(window::Change change) { return 1U << static_cast<unsigned>(change); }

    unsigned bits_ = 0;
};

struct Changed {
    HWND window = nullptr;  // null for what concerns no single window
    Changes changes;
};

class ChangeBatch final : public window::Display {
public:
    // `begun` is called at a batch's first change, on the core's side and under its lock: it may only post.
    explicit ChangeBatch(std::function<void()> begun) : begun_(std::move(begun)) {}

    void changed(HWND window, window::Change change) override;
    void textChanged(HWND window, std::u16string_view text) override;

    // What has come so far, in the order in which each window was first touched. Begins the next batch.
    [[nodiscard]] std::vector<Changed> take();

    // Returns when `rests` holds, asked anew whenever a thread has begun to wait for messages; at the latest
    // after `patience`.
    void waitUntil(const std::function<bool()>& rests, std::chrono::milliseconds patience);

private:
    std::function<void()> begun_;
    std::mutex mutex_;
    std::condition_variable idleCame_;
    std::vector<Changed> noted_;
    std::size_t last_ = 0;  // where the last change was noted: the next one is often the same window's
    unsigned idles_ = 0;
};

}  // namespace platform::qt
