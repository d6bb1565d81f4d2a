// tree_class.h - the window class of tree views.
#pragma once

#include "window/class_state.h"

namespace platform::window {

WindowClass treeViewClass();

}  // namespace platform::window
