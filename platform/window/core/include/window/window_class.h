// window_class.h - finds window classes by name.
#pragma once

#include "window/class_state.h"

#include <string_view>
#include <vector>

namespace platform::window {

// Returns the class with that name, or null if there is none. Ignores case.
const WindowClass* findClass(std::u16string_view name) REQUIRES(coreMutex);

// Returns the classes of controls and dialogs, which exist without RegisterClassW. The function is defined in
// platform/window/built_in_classes.cpp and not in the window core, because the window core includes no headers of
// controls and dialogs.
std::vector<WindowClass> builtInClasses();

}  // namespace platform::window
