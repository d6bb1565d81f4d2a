// button.h - what the dialog manager and the display need to know of a button.
#pragma once

#include "window/core.h"

namespace platform::window {

struct ButtonState : ControlState {
    int check = 0;
};

// Both need the lock; false and 0 for a window that is no button.
[[nodiscard]] bool isPushButton(const Window& window);
[[nodiscard]] bool isAutoRadioButton(const Window& window);

}  // namespace platform::window
