// button.h - what the dialog manager asks about buttons.
#pragma once

#include "window/core.h"

namespace platform::window {

// Need the lock. False for a window that is no button.
[[nodiscard]] bool isPushButton(const Window& window);
[[nodiscard]] bool isDefaultPushButton(const Window& window);  // by its style
[[nodiscard]] bool isAutoRadioButton(const Window& window);

}  // namespace platform::window
