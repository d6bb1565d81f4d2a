// control_classes.h - the window classes of this room.
#pragma once

#include "window/class_state.h"

namespace platform::window {

[[nodiscard]] WindowClass buttonClass();
[[nodiscard]] WindowClass staticClass();
[[nodiscard]] WindowClass editClass();
[[nodiscard]] WindowClass listBoxClass();
[[nodiscard]] WindowClass progressClass();
[[nodiscard]] WindowClass datePickerClass();
[[nodiscard]] WindowClass bandsClass();
[[nodiscard]] WindowClass commandBarClass();

}  // namespace platform::window
