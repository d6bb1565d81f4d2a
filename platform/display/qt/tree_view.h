// tree_view.h - the tree of the main window.
#pragma once

#include "view.h"

namespace platform::qt {

[[nodiscard]] View* makeTreeView(const window::WindowState& state, const Courier& courier, QWidget* parent);

}  // namespace platform::qt
