// window_geometry.h - from client coordinates to the screen.
#pragma once

#include "window/core.h"

namespace platform::window {

// The upper left corner of the window's client area, in screen coordinates.
POINT originOf(const Window& window) REQUIRES(coreMutex);

}  // namespace platform::window
