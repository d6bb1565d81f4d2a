// window_geometry.h - converts client coordinates to screen coordinates.
#pragma once

#include "window/core.h"

namespace platform::window {

// The upper left corner of the window's client area, in screen coordinates.
POINT originOf(const Window& window) REQUIRES(coreMutex);

}  // namespace platform::window
