// button_views.h - push buttons, check boxes, radio buttons, group boxes.
//
// A click never changes the state by itself: the core turns the check on or off and the widget follows.
#pragma once

#include "view.h"

#include <memory>

namespace platform::qt {

// For a window of kind Button, by its style.
[[nodiscard]] View* makeButtonView(const window::WindowState& state, const Courier& courier, QWidget* parent);

}  // namespace platform::qt
