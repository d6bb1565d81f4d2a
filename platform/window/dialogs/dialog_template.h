// dialog_template.h - a dialog as the resource compiler writes it, in its plain and its extended form.
#pragma once

#include "ce/types.h"

#include <optional>
#include <span>
#include <string>
#include <vector>

namespace platform::window {

// Places and sizes in dialog units.
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
    WORD iconId = 0;  // the text was a number: an icon's
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

// Nothing if the bytes end too early, or name a menu, a class of the program or a control's class that
// isn't among the standard ones by a number. Reads nothing outside of the bytes, and takes memory for what
// is really there, whatever the count of controls says.
[[nodiscard]] std::optional<DialogTemplate> readDialogTemplate(std::span<const std::byte> bytes);

// Dialog units to virtual pixels: a quarter of the base width of 6, an eighth of the base height of 13, to
// the nearest pixel, halves away from zero.
[[nodiscard]] int horizontalPixels(int units);
[[nodiscard]] int verticalPixels(int units);

}  // namespace platform::window
