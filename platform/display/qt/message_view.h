// message_view.h - a message box of the core as the desktop's own.
#pragma once

#include "top_view.h"

namespace platform::qt {

[[nodiscard]] TopView* makeMessageView(const window::WindowState& state, const Courier& courier, QWidget* owner);

}  // namespace platform::qt
