// images.h - handles of icons, bitmaps, cursors and image lists.
//
// A handle contains the number of its resource but no pixels. The display draws from the resource.
#pragma once

#include "ce/types.h"

namespace platform::window {

// Returns the resource number of an icon, a bitmap or a loaded image list. Returns 0 for any other handle.
WORD resourceIdOf(const void* handle);

}  // namespace platform::window
