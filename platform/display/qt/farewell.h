// farewell.h - the program's end when its desktop goes away in the middle of its work.
//
// Knows nothing of the toolkit.
#pragma once

#include "window/display.h"

#include <condition_variable>
#include <functional>
#include <mutex>
#include <set>

namespace platform::qt {

class Farewell final : public window::Display {
public:
    // Takes the place of the display and returns when `hasEnded` holds. A run is brought to its end, its
    // questions are closed, which refuses what they ask, and so is everything else that waits for a user.
    void closeEverything(const std::function<bool()>& hasEnded);

    void changed(HWND window, window::Change change) override;
    void textChanged(HWND window, std::u16string_view text) override;
    // From any thread: `hasEnded` may hold now.
    void look();

private:
    void closeWhatWaits();

    std::mutex mutex_;
    std::condition_variable news_;
    unsigned count_ = 0;
    std::set<HWND> closed_;
};

}  // namespace platform::qt
