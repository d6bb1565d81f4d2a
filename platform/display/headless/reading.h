// reading.h - what a user reads in a window and finds to press in it.
//
// What takes a handle reads the core anew; a window that is gone has nothing.
#pragma once

#include "snapshot.h"
#include "window/display.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace platform::headless {

// The control of that id, if it is visible; of several the first.
[[nodiscard]] std::optional<window::WindowState> findControl(HWND top, int id);

// The visible labels and edits of a window, in order, with line breaks between them. Without its caption.
[[nodiscard]] std::u16string textsOf(const Snapshot& snapshot);

// On one line: a message box's message; of any other window the caption, then its texts.
[[nodiscard]] std::u16string textOf(const Snapshot& snapshot);

// A check box or radio button?
[[nodiscard]] bool isCheckable(const window::WindowState& control);

// What a control shows, each on one line: a list's rows; "[x] " or "[ ] " and the text of what is checkable;
// the text of anything else.
[[nodiscard]] std::vector<std::u16string> linesOf(const window::WindowState& control);

// Is there an enabled menu item or toolbar button of that id in the window's bands?
[[nodiscard]] bool hasCommand(HWND top, int id);

// The control that has the focus, otherwise the window itself.
[[nodiscard]] HWND focusIn(HWND top);

// "ok", "cancel", ... of a message box's button; empty for another id.
[[nodiscard]] std::string_view answerName(int id);

// "yes,no" and "no": the buttons of a message box and the default one.
struct Buttons {
    std::string all;
    std::string standard;
};
[[nodiscard]] Buttons buttonsOf(const Snapshot& messageBox);

}  // namespace platform::headless
