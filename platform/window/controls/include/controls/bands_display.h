// bands_display.h - the data of command bands that a display reads. window/display.h has the rest of the interface.
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
    int image = 0;  // index of the picture in the bar's bitmap
    bool enabled = true;
    bool separator = false;
};

struct BandState {
    HWND bar = nullptr;
    std::vector<MenuItem> menu;
    std::vector<BarButton> buttons;
    WORD bitmapId = 0;  // contains the pictures of the buttons
    WORD imageId = 0;   // the bitmap beside the band's gripper; 0: none
    RECT rectangle{};   // relative to the command bands, virtual pixels
    bool gripper = true;
};

// Locks the core's mutex while it copies. The result is empty if the window doesn't exist.
std::vector<BandState> bandsOf(HWND commandBands);

}  // namespace platform::window
