// image_lists.h - image lists that a program makes with ImageList_Create.
//
// A list stores the size of its images and the resource number of its first bitmap, but no pixels. The display cuts the
// images from the bitmap's resource.
#pragma once

#include "ce/types.h"

namespace platform::window {

struct ImageSize {
    int width = 0;
    int height = 0;
};

// If `list` isn't the handle of an image list, imageSizeOf returns a width and height of 0, and firstBitmapOf returns
// 0. firstBitmapOf also returns 0 for a list without a bitmap. Any thread may call these functions.
ImageSize imageSizeOf(HIMAGELIST list);
WORD firstBitmapOf(HIMAGELIST list);

}  // namespace platform::window
