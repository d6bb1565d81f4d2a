// moment_text.h - converts dates and times from ISO 8601 texts to the format of the object store (FILETIME), and back.
#pragma once

#include "ce/types.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace database_formats {

// A date that exists, with or without a time of day and a time zone.
struct Moment {
    int year = 0, month = 0, day = 0;
    int hour = 0, minute = 0, second = 0;
    DWORD steps = 0;  // number of 100 ns steps since the beginning of the second
    bool hasTime = false;
    std::optional<int> minutesEast;  // offset from UTC, 0 for "Z". Not set if the text has no offset.
};

// Parses a date ("2025-03-11" or "20250311"), optionally with a time ("T08:30", "T083000", "T08:30:00.5") and an offset
// ("Z", "+01:00", "-0530"). A space is accepted in place of the T. Throws a FormatFault for any other text, and for
// a date or time that doesn't exist.
Moment momentFrom(std::string_view text);

// Converts the date and the time of day, and ignores `minutesEast`. Returns nothing for a time before 1601.
std::optional<FILETIME> fileTimeOf(const Moment& moment);

// Returns nothing for a time after the year 9999.
std::optional<Moment> momentOf(const FILETIME& time);

// Returns a text such as "2025-03-11T08:30:00", with ".1234567" if there is a fraction of a second. After the year
// 9999, returns the number of 100 ns steps since 1601.
std::string timeText(const FILETIME& time);

// Return texts such as "20250311T083000" and "20250311".
std::string basicTime(const Moment& moment);
std::string basicDate(const Moment& moment);

inline constexpr std::uint64_t stepsOf(const FILETIME& time)
{
    return std::uint64_t{time.dwHighDateTime} << 32 | time.dwLowDateTime;
}

}  // namespace database_formats
