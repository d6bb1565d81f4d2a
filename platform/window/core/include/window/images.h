// images.h - handles of icons, bitmaps, cursors and image lists.
//
// They carry the number of their resource and no pixels: the display has the pictures.
#pragma once

#include "ce/types.h"

namespace platform::window {

// The resource's number; 0 for null, or a handle that is no image of the resources.
[[nodiscard]] WORD resourceIdOf(const void* handle);

}  // namespace platform::window
