// repetition.h - durations and repetitions as iCalendar writes them.
#pragma once

#include "moment_text.h"

#include "ce/types.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace database_formats {

// "PT45M", "P1D", "-PT15M" in seconds. Throws a FormatFault.
[[nodiscard]] std::int64_t durationFrom(std::string_view text);

// "P2D" for whole days, "PT45M" otherwise.
[[nodiscard]] std::string durationText(LONG minutes);

// A rule as a number of days: 7 for each week, 365 for each year. Nothing for a rule that says more than that (an end,
// several days of a week, months).
[[nodiscard]] std::optional<ULONG> repetitionFrom(std::string_view rule, const Moment& start);
[[nodiscard]] std::string repetitionText(ULONG days);

}  // namespace database_formats
