// date_display.h - functions with which a display reads a date picker and posts to it. window/display.h has the rest of
// the interface.
//
// The date picker is the core's control. If the program or the user changes its date, the core calls changed(picker,
// Change::Date). A display whose toolkit has a date edit, a widget for dates, can show the picker as that widget. Such
// a display posts the date that the user chose in the date edit. Any other display posts keys.
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
