// image_lists.h - what the handles of image lists stand for, for the core and its displays.
//
// A list knows the size of its cells and the bitmaps of the resources that they are cut from. It holds no
// pixels: the display has the pictures.
#pragma once

#include "ce/types.h"

namespace platform::window {

struct ImageSize {
    int width = 0;
    int height = 0;
};

// For a list of ImageList_Create. 0 by 0, or 0, for null and any other handle. Any thread may call.
[[nodiscard]] ImageSize imageSizeOf(HIMAGELIST list);
[[nodiscard]] WORD firstBitmapOf(HIMAGELIST list);

}  // namespace platform::window
