// button.h - functions that tell the dialog manager the kind of a button.
#pragma once

#include "window/core.h"

namespace platform::window {

// These functions return false for a window that isn't a button.
bool isPushButton(const Window& window) REQUIRES(coreMutex);
bool isDefaultPushButton(const Window& window) REQUIRES(coreMutex);  // has the style BS_DEFPUSHBUTTON
bool isAutoRadioButton(const Window& window) REQUIRES(coreMutex);

}  // namespace platform::window
