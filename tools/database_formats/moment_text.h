// moment_text.h - a date and a time of day as ISO 8601 writes them, and as the store keeps them.
#pragma once

#include "ce/types.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace database_formats {

// What a text says; the date is one that exists.
struct Moment {
    int year = 0, month = 0, day = 0;
    int hour = 0, minute = 0, second = 0;
    DWORD steps = 0;  // of 100 ns, beyond the second
    bool hasTime = false;
    std::optional<int> minutesEast;  // of Greenwich, 0 for "Z"; absent: no zone is said
};

// "2025-03-11", "20250311", then perhaps "T08:30", "T083000", "T08:30:00.5", then perhaps "Z", "+01:00", "-0530".
// A space does for the T. Throws a FormatFault.
[[nodiscard]] Moment momentFrom(std::string_view text);

// As it is said, without a step of the zone. Nothing before 1601.
[[nodiscard]] std::optional<FILETIME> fileTimeOf(const Moment& moment);

// Nothing for a time behind the year 9999.
[[nodiscard]] std::optional<Moment> momentOf(const FILETIME& time);

// "2025-03-11T08:30:00", with ".1234567" for a part of a second; the number of 100 ns steps behind the year 9999.
[[nodiscard]] std::string timeText(const FILETIME& time);

// "20250311T083000", "20250311": whole seconds, no zone.
[[nodiscard]] std::string basicTime(const Moment& moment);
[[nodiscard]] std::string basicDate(const Moment& moment);

[[nodiscard]] inline constexpr std::uint64_t stepsOf(const FILETIME& time)
{
    return std::uint64_t{time.dwHighDateTime} << 32 | time.dwLowDateTime;
}

}  // namespace database_formats
