// clock.h - lets a test choose the time and the date format that the calls of the platform return.
#pragma once

#include "ce/time.h"

#include <string>
#include <string_view>

namespace platform::time {

// Makes GetLocalTime return `now` until resumeClock is called. Any thread may call these functions.
void stopClockAt(const SYSTEMTIME& now);
void resumeClock();

// Sets the short date format that GetLocaleInfoW returns. An empty format restores the format of the host (the Linux
// system). Any thread may call this function.
void setShortDateFormat(std::u16string format);

// Converts a date format of the host (as strftime takes it) to the platform's form: "%d.%m.%Y" becomes "dd.MM.yyyy".
// Letters that aren't part of the date are put in single quotes.
[[nodiscard]] std::u16string pictureOfDateFormat(std::string_view hostFormat);

}  // namespace platform::time
