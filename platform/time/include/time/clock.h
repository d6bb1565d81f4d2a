// clock.h - what stands behind the time and date calls, for whoever must know what they will say.
#pragma once

#include "ce/time.h"

#include <string>
#include <string_view>

namespace platform::time {

// From here on GetLocalTime gives `now`, until resumeClock. Any thread.
void stopClockAt(const SYSTEMTIME& now);
void resumeClock();

// The short date format from here on; an empty one is the host's again. Any thread.
void setShortDateFormat(std::u16string format);

// The picture of a date format of the host: "%d.%m.%Y" is "dd.MM.yyyy". Letters that are no part of the date
// stand in single quotes.
[[nodiscard]] std::u16string pictureOfDateFormat(std::string_view hostFormat);

}  // namespace platform::time
