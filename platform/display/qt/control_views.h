// control_views.h - a widget for each kind of control.
#pragma once

#include "view.h"

namespace platform::qt {

// Belongs to `parent` as its widget does. Null for a kind that isn't shown.
[[nodiscard]] View* makeControlView(const window::WindowState& state, const Courier& courier, QWidget* parent);

// What the core keeps of every control alike.
void followControl(View& view, const window::WindowState& state, Changes changes);

}  // namespace platform::qt
