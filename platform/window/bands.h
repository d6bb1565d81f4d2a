// bands.h - what command bands and their bars hold.
#pragma once

#include "window/core.h"

namespace platform::window {

struct Band {
    HWND bar = nullptr;
    int width = 0;
    UINT style = 0;
    bool hasImage = false;
};

struct BandsState : ControlState {
    std::vector<Band> bands;
    int adornmentWidth = 0;
    int height = 0;
    WORD imagesId = 0;  // bitmap of the image list
};

struct CommandBarState : ControlState {
    std::vector<MenuItem> menu;
    std::vector<BarButton> buttons;
    WORD bitmapId = 0;
};

// The parent of bands has a new size: its bands are laid out anew and tell it. Without the lock.
void layOutBandsOf(HWND parent);

}  // namespace platform::window
