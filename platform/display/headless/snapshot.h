// snapshot.h - a copy of the state of a window and its controls.
#pragma once

#include "window/display.h"

#include <optional>
#include <vector>

namespace platform::headless {

struct Snapshot {
    window::WindowState window;
    std::vector<window::WindowState> controls;  // in creation order
};

// Returns nothing if the window doesn't exist any more. The core's mutex is locked for each window separately, so the
// program can change a control between two copies.
[[nodiscard]] std::optional<Snapshot> snapshotOf(HWND window);

// Does the same as snapshotOf(), but for a caller inside Display::changed, where the core's mutex is held. So nothing
// changes while the windows are copied. The transcript needs this function for windows that exist only for a moment.
[[nodiscard]] std::optional<Snapshot> snapshotUnderLock(HWND window) REQUIRES(window::coreMutex);

}  // namespace platform::headless
