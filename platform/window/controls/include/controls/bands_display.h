// bands_display.h - what a display asks about command bands; window/display.h has the rest.
#pragma once

#include "ce/types.h"

#include <string>
#include <vector>

namespace platform::window {

struct MenuItem {
    std::u16string text;
    WORD id = 0;  // 0 for a popup or separator
    bool separator = false;
    bool enabled = true;
    std::vector<MenuItem> items;  // of a popup
};

struct BarButton {
    int id = 0;
    int image = 0;  // cell of the bar's bitmap
    bool enabled = true;
    bool separator = false;
};

struct BandState {
    HWND bar = nullptr;
    std::vector<MenuItem> menu;
    std::vector<BarButton> buttons;
    WORD bitmapId = 0;  // of the buttons' cells
    WORD imageId = 0;   // the bitmap beside the band's gripper; 0: none
    RECT rectangle{};   // in the bands, virtual pixels
    bool gripper = true;
};

// Locks the core's mutex while it copies. Empty for a dead window.
std::vector<BandState> bandsOf(HWND commandBands);

}  // namespace platform::window
