// dialog_template.h - reads a dialog from the resources, in the plain and the extended format.
#pragma once

#include "ce/types.h"

#include <optional>
#include <span>
#include <string>
#include <vector>

namespace platform::window {

// Positions and sizes are in dialog units.
struct ControlTemplate {
    DWORD style = 0;
    DWORD exStyle = 0;
    SHORT x = 0;
    SHORT y = 0;
    SHORT width = 0;
    SHORT height = 0;
    int id = 0;
    std::u16string className;
    std::u16string text;
    WORD iconId = 0;  // not 0 if the template has a number in place of the text
};

struct DialogTemplate {
    DWORD style = 0;
    DWORD exStyle = 0;
    SHORT x = 0;
    SHORT y = 0;
    SHORT width = 0;
    SHORT height = 0;
    std::u16string title;
    std::vector<ControlTemplate> controls;
};

// Returns nothing if the bytes end too early, if the dialog has a menu or a class, or if the class of a control is
// missing or is given by an unknown number. Never reads outside the bytes. Allocates only for controls that the bytes
// contain, even if the template's count is higher.
[[nodiscard]] std::optional<DialogTemplate> readDialogTemplate(std::span<const std::byte> bytes);

// These functions convert dialog units to virtual pixels. A horizontal unit is 6/4 pixels, a vertical unit 13/8 pixels.
// Results are rounded to the nearest pixel, halves away from zero.
int horizontalPixels(int units);
int verticalPixels(int units);

}  // namespace platform::window
