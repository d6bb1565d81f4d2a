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

// Copies the state of the window and its controls. Returns nothing if the window doesn't exist any more. The call locks
// the window core's mutex anew for the window and for each control, so the program can change a control while others
// are copied.
[[nodiscard]] std::optional<Snapshot> snapshotOf(HWND window);

// Does the same as snapshotOf(), but for a caller inside Display::changed, where the window core's mutex is held. So
// nothing changes while the windows are copied. ScriptScreen uses this function to describe a new window in the
// script's transcript, because the window may exist only for a moment.
[[nodiscard]] std::optional<Snapshot> snapshotUnderLock(HWND window) REQUIRES(window::coreMutex);

}  // namespace platform::headless
