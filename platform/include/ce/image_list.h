// ce/image_list.h - makes image lists from bitmaps of the resources. All images of a list have the same size.
#pragma once

#include "ce/controls.h"

inline constexpr UINT ILC_MASK = 1;

// Makes an empty list for images of `width` by `height` pixels. The list grows automatically, so `initial` and `grow`
// are not used. If the width or the height is below 1, returns null and sets error 87.
HIMAGELIST ImageList_Create(int width, int height, UINT flags, int initial, int grow);

// Adds the images that are side by side in the bitmap. `mask` is not used. Instead, when the images are drawn, the
// pixels with the colour of the bitmap's top left pixel are transparent. Returns the index of the first added image. If
// `list` is no image list or `bitmap` is no bitmap, returns -1 and sets error 6. The bitmap may be deleted afterwards.
int ImageList_AddMasked(HIMAGELIST list, HBITMAP bitmap, COLORREF mask);

// Returns the bitmap resource with the number `name`. Returns null on failure. The last error is that of FindResourceW
// (ce/resource.h), or 1814 if `name` isn't a number.
HBITMAP LoadBitmapW(HINSTANCE instance, const WCHAR* name);

// Frees nothing, because images stay in the program's resources and take no memory of their own. Returns nonzero for
// the handle of a bitmap, an icon or an image list of ImageList_LoadImage. For any other handle, also for a list of
// ImageList_Create, returns 0 and sets error 6. For any other handle, returns 0 and sets error 6.
BOOL DeleteObject(HBITMAP bitmap);
