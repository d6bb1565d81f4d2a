// repetition.h - converts durations and repetitions of iCalendar.
#pragma once

#include "moment_text.h"

#include "ce/types.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace database_formats {

// Returns the seconds of a duration such as "PT45M", "P1D" or "-PT15M". Throws a FormatFault if the text isn't a
// duration or is longer than 10^15 seconds.
std::int64_t durationFrom(std::string_view text);

// Returns a text such as "P2D" for whole days, otherwise a text such as "PT45M".
std::string durationText(LONG minutes);

// Returns the interval of a rule in days: 7 for FREQ=WEEKLY, 365 for FREQ=YEARLY. Returns nothing for a rule that an
// interval in days can't express. Examples are FREQ=MONTHLY, a rule with an end and a rule with several weekdays.
std::optional<ULONG> repetitionFrom(std::string_view rule, const Moment& start);
// Returns a rule such as "FREQ=WEEKLY;INTERVAL=2" for 14 days.
std::string repetitionText(ULONG days);

}  // namespace database_formats
