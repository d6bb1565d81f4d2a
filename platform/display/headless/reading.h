// reading.h - finds what a user can see of a window: its texts, controls and commands.
//
// A function with a handle as its parameter reads the current state of the window core. If the window is destroyed, the
// function finds nothing.
#pragma once

#include "snapshot.h"
#include "window/display.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace platform::headless {

// Returns the first visible control with that id.
std::optional<window::WindowState> findControl(HWND top, int id);

// Returns the texts of the visible labels and edits, in creation order, with line breaks between them.
std::u16string textsOf(const Snapshot& snapshot);

// Returns the message of a message box, or the caption and texts of any other window. The result is on one line.
std::u16string textOf(const Snapshot& snapshot);

// True if a control of the kind Button is a check box or radio button. For any other kind, the result means nothing.
bool isCheckable(const window::WindowState& control);

// Returns the lines that a control shows. A list has one line for each row. A check box or radio button has one line:
// "[x] " or "[ ] " and its text. Any other control has one line with its text.
std::vector<std::u16string> linesOf(const window::WindowState& control);

// True if the window's command bands have an enabled menu item or toolbar button with that id.
bool hasCommand(HWND top, int id);

// Returns the focused control in the window, or the window itself if no control has the focus.
HWND focusIn(HWND top);

// Returns the name of a message box's button in scripts: "ok", "cancel", ... The name is empty for any other id.
std::string_view answerName(int id);

struct Buttons {
    std::string all;            // "yes,no"
    std::string defaultButton;  // "no"
};
Buttons buttonsOf(const Snapshot& messageBox);

}  // namespace platform::headless
