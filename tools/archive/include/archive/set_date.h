// set_date.h - when a set was made (docs/archive.md, "The date of a set").
#pragma once

#include "archive/set_files.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace archive {

enum class DateSource {
    Comment,         // the comment allows one date only
    FileOrder,       // two dates are possible, and one of them is near the time of the list file
    NeighbourOrder,  // the sets beside it have the day first, or the month
    AssumedOrder,    // nothing decides, so the day counts as first
    FileTime,        // there is no date in the comment
};

// A local time of the device, without a zone. Without a date in the comment: the host's local time of the list file.
struct SetDate {
    int year = 1601;
    unsigned month = 1;
    unsigned day = 1;
    unsigned hour = 0;
    unsigned minute = 0;
    DateSource source = DateSource::FileTime;

    // Days and minutes since 1970, for comparisons.
    std::int64_t days() const;
    std::int64_t minutes() const;
    // "2026-11-25 22:31"
    std::string text() const;
    // Why the date isn't certain, for the user. Empty if it is.
    std::string_view doubt() const;
    // The text, and the doubt in parentheses.
    std::string textWithDoubt() const;
};

// The dates of the sets, in their order. Reads the comment of each. A set that can't be read has the time of its file.
std::vector<SetDate> datesOf(const std::vector<SetFiles>& sets);

}  // namespace archive
