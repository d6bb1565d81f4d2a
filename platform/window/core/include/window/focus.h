// focus.h - which window has the focus, and which gets it next.
#pragma once

#include "window/core.h"

namespace platform::window {

// Is it visible and enabled, and does its class take the focus?
bool acceptsFocus(const Window& window) REQUIRES(coreMutex);
// The next child of the dialog, in creation order, that has WS_TABSTOP and accepts the focus. After the last child the
// search continues with the first. Without `from` it begins with the first child, or backward with the last. Null if no
// child qualifies.
Window* nextTabStop(const Window& dialog, const Window* from, bool backward) REQUIRES(coreMutex);
// The next control of the group that accepts the focus, with the same order; `control` itself if no other does.
Window* nextInGroup(Window& control, bool backward) REQUIRES(coreMutex);
// The group of `control`: its siblings from the last WS_GROUP at or before it up to the next WS_GROUP.
std::vector<Window*> groupOf(Window& control) REQUIRES(coreMutex);

// Makes a top-level window the active one. The focus goes to the control that had it last, or to the first that can
// have it. Does nothing for a window of another thread, as does moveFocusOff.
void activate(HWND topLevel) EXCLUDES(coreMutex);
// If the focus is in `window`, which can no longer keep it, moves it to the next control that can.
void moveFocusOff(HWND window) EXCLUDES(coreMutex);

}  // namespace platform::window
