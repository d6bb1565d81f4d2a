// date_display.h - lets a display read a date picker and post dates to it. window/display.h explains what a display is,
// and has the rest of the interface.
//
// The window core implements the date picker. If the program or the user changes the date, the window core calls
// changed(picker, Change::Date) of the display. A display that gets a whole date from the user posts it with postDate.
// An example is a display that shows the picker as a date widget of its toolkit. Any other display posts keys.
#pragma once

#include "ce/time.h"
#include "ce/types.h"

namespace platform::window {

// Reads the date that the picker shows. Returns false if the window doesn't exist.
[[nodiscard]] bool readDate(HWND picker, SYSTEMTIME& date);

// Posts raw input by the rules of window/display.h. Only the year, month and day of `date` are used. A date that
// doesn't exist changes nothing.
bool postDate(HWND picker, const SYSTEMTIME& date);

}  // namespace platform::window
