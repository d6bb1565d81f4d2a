// list_view.h - a list box. The rows, the selection and the row that has the keyboard are the core's.
#pragma once

#include "view.h"

namespace platform::qt {

[[nodiscard]] View* makeListView(const window::WindowState& state, const Courier& courier, QWidget* parent);

}  // namespace platform::qt
