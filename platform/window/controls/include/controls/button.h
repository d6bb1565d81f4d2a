// button.h - what the dialog manager asks about buttons.
#pragma once

#include "window/core.h"

namespace platform::window {

// False for a window that isn't a button.
bool isPushButton(const Window& window) REQUIRES(coreMutex);
bool isDefaultPushButton(const Window& window) REQUIRES(coreMutex);  // by its style
bool isAutoRadioButton(const Window& window) REQUIRES(coreMutex);

}  // namespace platform::window
