// reading.h - the texts, controls and commands of a window that a user can see.
//
// A function with a handle reads the core's current state. It finds nothing in a window that is destroyed.
#pragma once

#include "snapshot.h"
#include "window/display.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace platform::headless {

// The first visible control with that id.
std::optional<window::WindowState> findControl(HWND top, int id);

// The texts of the visible labels and edits, in creation order, with line breaks between them.
std::u16string textsOf(const Snapshot& snapshot);

// On one line: the message of a message box; the caption and the texts of another window.
std::u16string textOf(const Snapshot& snapshot);

// True for a check box or radio button.
bool isCheckable(const window::WindowState& control);

// What a control shows, one line each: the rows of a list; "[x] " or "[ ] " and the text of a check box or radio
// button; the text of another control.
std::vector<std::u16string> linesOf(const window::WindowState& control);

// True if the window's bands have an enabled menu item or toolbar button with that id.
bool hasCommand(HWND top, int id);

// The control with the focus, or else the window.
HWND focusIn(HWND top);

// The name of a message box's button in scripts: "ok", "cancel", ... Empty for another id.
std::string_view answerName(int id);

struct Buttons {
    std::string all;            // "yes,no"
    std::string defaultButton;  // "no"
};
Buttons buttonsOf(const Snapshot& messageBox);

}  // namespace platform::headless
