// date_view.h - a date picker: the desktop's date edit with its calendar.
#pragma once

#include "view.h"

namespace platform::qt {

[[nodiscard]] View* makeDateView(const window::WindowState& state, const Courier& courier, QWidget* parent);

}  // namespace platform::qt
