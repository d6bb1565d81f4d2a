// date_display.h - what a display reads from a date picker and posts to it; window/display.h has the rest.
//
// The core reports each change, by the program or the user, as changed(picker, Change::Date). A display that has a date
// edit posts the date that the user chose in it. A display without one posts keys.
#pragma once

#include "ce/time.h"
#include "ce/types.h"

namespace platform::window {

// The date shown. False for a dead window.
[[nodiscard]] bool readDate(HWND picker, SYSTEMTIME& date);

// Raw input, by the rules of window/display.h. Only year, month and day count. A date that doesn't exist changes
// nothing.
bool postDate(HWND picker, const SYSTEMTIME& date);

}  // namespace platform::window
