// edit_views.h - edit controls, with one line or many.
//
// Typing, selecting, copying and input methods are the desktop's own. The whole text goes to the core at each
// change, before whatever the user does next; what the core makes of it (a limit) comes back.
#pragma once

#include "view.h"

namespace platform::qt {

[[nodiscard]] View* makeEditView(const window::WindowState& state, const Courier& courier, QWidget* parent);

}  // namespace platform::qt
