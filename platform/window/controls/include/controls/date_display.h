// date_display.h - what a display asks of a date picker and posts to it; window/display.h has the rest.
//
// changed(picker, Change::Date) comes after each change, by the program or the user. A display with a date
// edit of its own posts the date that the user settled on; one without posts keys, which move between day, month and
// year, step them, or type them.
#pragma once

#include "ce/time.h"
#include "ce/types.h"

namespace platform::window {

// The date shown. False for a dead window.
[[nodiscard]] bool readDate(HWND picker, SYSTEMTIME& date);

// Raw input, dropped and queued by the rules of display.h. Only year, month and day count; a date that
// doesn't exist changes nothing.
bool postDate(HWND picker, const SYSTEMTIME& date);

}  // namespace platform::window
