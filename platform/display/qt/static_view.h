// static_view.h - a text or an icon that takes no input.
#pragma once

#include "view.h"

namespace platform::qt {

[[nodiscard]] View* makeStaticView(const window::WindowState& state, const Courier& courier, QWidget* parent);

}  // namespace platform::qt
