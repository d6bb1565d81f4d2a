#include "snapshot.h"

namespace platform::headless {

using window::WindowState;

std::optional<Snapshot> snapshotOf(HWND window)
{
    Snapshot snapshot;
    if (!window::readWindow(window, snapshot.window))
        return std::nullopt;
    for (const HWND child : window::childrenOf(window)) {
        if (WindowState control; window::readWindow(child, control))
            snapshot.controls.push_back(std::move(control));
    }
    return snapshot;
}

std::optional<Snapshot> snapshotUnderLock(HWND window)
{
    Snapshot snapshot;
    if (!window::readWindowLocked(window, snapshot.window))
        return std::nullopt;
    for (const HWND child : window::childrenOfLocked(window))
        (void)window::readWindowLocked(child, snapshot.controls.emplace_back());
    return snapshot;
}

}  // namespace platform::headless
