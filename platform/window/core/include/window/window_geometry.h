// window_geometry.h - windows on the screen, for the core's other files.
#pragma once

#include "window/core.h"

namespace platform::window {

// Where the window's client area begins on the screen.
[[nodiscard]] POINT originOf(const Window& window) REQUIRES(coreMutex);

}  // namespace platform::window
