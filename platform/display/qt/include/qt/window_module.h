// window_module.h - loads the window module beside the program. Knows nothing of the toolkit.
#pragma once

#include <functional>

namespace platform::display {

// As quillboxRunWithWindow() of qt_display.h. WindowNoDesktop too if the module isn't there or can't be loaded.
[[nodiscard]] int runWithWindow(const std::function<int()>& program);

}  // namespace platform::display
