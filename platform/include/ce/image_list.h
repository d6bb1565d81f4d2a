// ce/image_list.h - makes image lists from bitmaps of the resources. All images of a list have the same size.
#pragma once

#include "ce/controls.h"

inline constexpr UINT ILC_MASK = 1;

// Makes an empty list for images of that size, in pixels. The list grows automatically. Null with 87 for a size below
// 1.
HIMAGELIST ImageList_Create(int width, int height, UINT flags, int initial, int grow);

// Adds the images that are side by side in the bitmap. Pixels that have exactly the colour `mask` are transparent. Rows
// of the bitmap below the list's height are not used. Returns the index of the first image, or -1 with 6 for a handle
// that is no list or no bitmap. The bitmap may be deleted afterwards.
int ImageList_AddMasked(HIMAGELIST list, HBITMAP bitmap, COLORREF mask);

// A bitmap of the resources by number; null with 1813 or 1814.
HBITMAP LoadBitmapW(HINSTANCE instance, const WCHAR* name);

// Nonzero on success, 0 with 6.
BOOL DeleteObject(HBITMAP bitmap);
