// progress_view.h - a progress bar.
#pragma once

#include "view.h"

namespace platform::qt {

[[nodiscard]] View* makeProgressView(const window::WindowState& state, const Courier& courier, QWidget* parent);

}  // namespace platform::qt
