// image_lists.h - image lists that a program makes with ImageList_Create.
//
// A list has the size of its images and the number of the bitmap that they are cut from, but no pixels. The display
// draws from the resource.
#pragma once

#include "ce/types.h"

namespace platform::window {

struct ImageSize {
    int width = 0;
    int height = 0;
};

// Zero for null or a handle of anything else. Any thread may call both.
ImageSize imageSizeOf(HIMAGELIST list);
WORD firstBitmapOf(HIMAGELIST list);

}  // namespace platform::window
