// control_classes.h - the window classes of all controls except the tree view.
#pragma once

#include "window/class_state.h"

namespace platform::window {

WindowClass buttonClass();
WindowClass staticClass();
WindowClass editClass();
WindowClass listBoxClass();
WindowClass progressClass();
WindowClass datePickerClass();
WindowClass bandsClass();
WindowClass commandBarClass();

}  // namespace platform::window
