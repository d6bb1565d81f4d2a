// repetition.h - durations and repetitions as iCalendar writes them.
#pragma once

#include "moment_text.h"

#include "ce/types.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace database_formats {

// The seconds of a duration such as "PT45M", "P1D" or "-PT15M". Throws a FormatFault.
std::int64_t durationFrom(std::string_view text);

// "P2D" for whole days, otherwise "PT45M".
std::string durationText(LONG minutes);

// The interval of a rule in days: 7 for weekly, 365 for yearly. Nothing for a rule that has more than an interval, such
// as an end, several days of a week, or months.
std::optional<ULONG> repetitionFrom(std::string_view rule, const Moment& start);
std::string repetitionText(ULONG days);

}  // namespace database_formats
