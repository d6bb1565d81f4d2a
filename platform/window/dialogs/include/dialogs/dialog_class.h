// dialog_class.h - the window class of dialogs and message boxes.
#pragma once

#include "window/class_state.h"

namespace platform::window {

WindowClass dialogClass();

}  // namespace platform::window
