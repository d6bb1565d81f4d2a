// images.h - handles of icons, bitmaps, cursors and image lists.
//
// A handle carries the number of its resource and no pixels. The display draws from the resource.
#pragma once

#include "ce/types.h"

namespace platform::window {

// The number of the resource. 0 for null or a handle of anything else.
WORD resourceIdOf(const void* handle);

}  // namespace platform::window
