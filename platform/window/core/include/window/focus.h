// focus.h - which window has the keyboard, and which comes next.
#pragma once

#include "window/core.h"

namespace platform::window {

[[nodiscard]] bool acceptsFocus(const Window& window)
    REQUIRES(coreMutex);  // visible, enabled, and of a class that does
// The next control in creation order with WS_TABSTOP that accepts the focus, going round; `from` null: from
// the first (or last) on. Null if there is none.
[[nodiscard]] Window* nextTabStop(const Window& dialog, const Window* from, bool backward) REQUIRES(coreMutex);
// The next control of the group that accepts the focus, going round; the control itself if it is alone.
[[nodiscard]] Window* nextInGroup(Window& control, bool backward) REQUIRES(coreMutex);
// The controls from the nearest WS_GROUP up to before the next one.
[[nodiscard]] std::vector<Window*> groupOf(Window& control) REQUIRES(coreMutex);

// Both do nothing for a window of another thread.
// Makes a top-level window the active one: the focus goes to where it was in it, or to its first control.
void activate(HWND topLevel) EXCLUDES(coreMutex);
// Takes the focus away from a window that can't keep it, to the next control that can.
void moveFocusOff(HWND window) EXCLUDES(coreMutex);

}  // namespace platform::window
