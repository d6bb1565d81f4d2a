// clock.h - fixes the results of the time and date calls, for tests.
#pragma once

#include "ce/time.h"

#include <string>
#include <string_view>

namespace platform::time {

// Makes GetLocalTime return `now` until resumeClock is called. Any thread may call these functions.
void stopClockAt(const SYSTEMTIME& now);
void resumeClock();

// Sets the short date format. An empty format restores that of the host. Any thread may call it.
void setShortDateFormat(std::u16string format);

// Converts a date format of the host to the platform's: "%d.%m.%Y" becomes "dd.MM.yyyy". Letters that aren't
// part of the date are put in single quotes.
[[nodiscard]] std::u16string pictureOfDateFormat(std::string_view hostFormat);

}  // namespace platform::time
