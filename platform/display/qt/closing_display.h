// closing_display.h - the display of a program that has lost its desktop: closes the windows until the program ends.
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
    // Replaces the current display. Returns when `hasEnded` returns true. A run in progress is completed. Each window
    // that waits for the user is closed, and each question is answered with the button that refuses.
    void closeUntil(const std::function<bool()>& hasEnded);
    // Must be called when `hasEnded` may return true now. Any thread may call wake().
    void wake();

    void changed(HWND window, window::Change change) override;
    void textChanged(HWND window, std::u16string_view text) override;

private:
    void closeInputWindows();

    std::mutex mutex_;  // guards changes_
    std::condition_variable changesGrew_;
    unsigned changes_ = 0;
    std::set<HWND> closed_;  // only the thread in closeUntil() uses it
};

}  // namespace platform::qt
