// snapshot.h - a window and its controls as they are at one moment.
#pragma once

#include "window/display.h"

#include <optional>
#include <vector>

namespace platform::headless {

struct Snapshot {
    window::WindowState window;
    std::vector<window::WindowState> controls;  // in creation order
};

// Nothing for a dead window.
[[nodiscard]] std::optional<Snapshot> snapshotOf(HWND window);

// The same for a caller inside Display::changed, which holds the core's mutex. A window that exists only for a moment
// can be seen only then.
[[nodiscard]] std::optional<Snapshot> snapshotUnderLock(HWND window) REQUIRES(window::coreMutex);

}  // namespace platform::headless
