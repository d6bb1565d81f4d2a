// closing_display.h - the display of a program that has lost its desktop. Until the program ends, this display closes
// each window that waits for the user.
//
// This class uses no toolkit.
#pragma once

#include "window/display.h"

#include <condition_variable>
#include <functional>
#include <mutex>
#include <set>

namespace platform::qt {

class ClosingDisplay final : public window::Display {
public:
    // Replaces the current display. Closes each window that waits for the user. A question gets the answer that changes
    // nothing: Cancel, No, Abort, or OK if there is no other button. Doesn't interrupt a backup or restore in progress.
    // Returns when `hasEnded` returns true.
    void closeUntil(const std::function<bool()>& hasEnded);
    // Must be called after an event that can make `hasEnded` return true. Any thread may call wake().
    void wake();

    void changed(HWND window, window::Change change) override;
    void textChanged(HWND window, std::u16string_view text) override;

private:
    void closeInputWindows();

    std::mutex mutex_;  // guards changes_
    std::condition_variable changesGrew_;
    unsigned changes_ = 0;
    std::set<HWND> closed_;  // the windows that were asked to close; only the thread in closeUntil() uses this set
};

}  // namespace platform::qt
