// bands_display.h - lets a display read the menus and buttons of command bands. window/display.h explains what a
// display is, and has the rest of the interface.
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

// Returns a copy of the data of all bands. The result is empty if the window doesn't exist. Locks coreMutex.
std::vector<BandState> bandsOf(HWND commandBands);

}  // namespace platform::window
