// main_view.h - the program's main window: its bands, and below them its one other child.
#pragma once

#include "top_view.h"

namespace platform::qt {

[[nodiscard]] TopView* makeMainView(const window::WindowState& state, const Courier& courier);

}  // namespace platform::qt
