// focus.h - finds the window that gets the focus next, and moves the focus.
#pragma once

#include "window/core.h"

namespace platform::window {

// Can the window get the focus? It must be visible and enabled, and its class must take the focus.
bool acceptsFocus(const Window& window) REQUIRES(coreMutex);
// Returns the next child of the dialog, in creation order, that has WS_TABSTOP and accepts the focus. If `backward`,
// returns the previous one. The search doesn't end at the last or first child, but continues at the other end. If
// `from` is null, the search begins with the first child, or with the last child if `backward` is true. Returns null if
// no child qualifies.
Window* nextTabStop(const Window& dialog, const Window* from, bool backward) REQUIRES(coreMutex);
// Returns the next control, in creation order, that is in the group of `control` and accepts the focus. If `backward`,
// returns the previous one. The search doesn't end at the end of the group, but continues at the other end. Returns
// `control` itself if no other control accepts the focus.
Window* nextInGroup(Window& control, bool backward) REQUIRES(coreMutex);
// Returns the group of `control`. A group begins with the parent's first child or with a control that has WS_GROUP. It
// ends before the next control that has WS_GROUP.
std::vector<Window*> groupOf(Window& control) REQUIRES(coreMutex);

// Makes `topLevel` the active window. Its control that had the focus last gets the focus again, if that control accepts
// the focus. Otherwise the first control that has WS_TABSTOP and accepts the focus gets it. If there is no such control
// and the window isn't a dialog, the first control that accepts the focus gets it. If there is none either, the window
// itself gets the focus. If the window is disabled, it becomes active but the focus doesn't move. Does nothing for a
// window of another thread.
void activate(HWND topLevel) EXCLUDES(coreMutex);
// If `window` or a descendant has the focus, moves the focus to the next tab stop after `window`. If there is none, or
// if `window` is a top-level window, no window has the focus afterwards. Must be called when `window` is hidden,
// disabled or destroyed. Does nothing for a window of another thread.
void moveFocusOff(HWND window) EXCLUDES(coreMutex);

}  // namespace platform::window
