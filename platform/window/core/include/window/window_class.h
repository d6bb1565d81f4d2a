// window_class.h - the window classes by name.
#pragma once

#include "window/class_state.h"

#include <string_view>
#include <vector>

namespace platform::window {

// Returns the class with that name, or null if there is none. Ignores case.
const WindowClass* findClass(std::u16string_view name) REQUIRES(coreMutex);

// Returns the classes of controls and dialogs, which exist without RegisterClassW. The function is defined in
// built_in_classes.cpp, because the core includes no headers of the rooms that contain these classes.
std::vector<WindowClass> builtInClasses();

}  // namespace platform::window
