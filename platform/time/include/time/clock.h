// clock.h - fixes the results of the time and date calls, for tests and scripts.
#pragma once

#include "ce/time.h"

#include <string>
#include <string_view>

namespace platform::time {

// Makes GetLocalTime return `now` until resumeClock. Any thread may call them.
void stopClockAt(const SYSTEMTIME& now);
void resumeClock();

// Sets the short date format. An empty one restores the host's. Any thread may call it.
void setShortDateFormat(std::u16string format);

// Converts a date format of the host to the platform's: "%d.%m.%Y" becomes "dd.MM.yyyy". Letters that aren't
// part of the date are put in single quotes.
[[nodiscard]] std::u16string pictureOfDateFormat(std::string_view hostFormat);

}  // namespace platform::time
