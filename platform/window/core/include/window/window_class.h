// window_class.h - the window classes by name.
#pragma once

#include "window/class_state.h"

#include <string_view>
#include <vector>

namespace platform::window {

// Null if there is none. Case doesn't count.
const WindowClass* findClass(std::u16string_view name) REQUIRES(coreMutex);

// The classes that exist without RegisterClassW: the controls and dialogs. Defined above the rooms of the controls.
std::vector<WindowClass> builtInClasses();

}  // namespace platform::window
