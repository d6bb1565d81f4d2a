// set_date.h - finds out when a set was made (docs/archive.md, "The date of a set").
#pragma once

#include "archive/set_files.h"

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace archive {

enum class DateSource {
    Comment,         // the comment allows one date only
    FileOrder,       // two dates are possible, and only one of them is near the time of the list file
    NeighbourOrder,  // two dates are possible, and neighbouring sets show whether the day comes first
    AssumedOrder,    // two dates are possible and nothing decides, so the first number counts as the day
    FileTime,        // the comment has no date or can't be read
};

// The date of a set. It is a local time of the device, without a time zone. If the comment of the set has no date, the
// date is the modification time of the list file in the host's local time.
struct SetDate {
    int year = 1601;
    unsigned month = 1;
    unsigned day = 1;
    unsigned hour = 0;
    unsigned minute = 0;
    DateSource source = DateSource::FileTime;

    // Return the days and the minutes since 1970, for comparisons.
    std::int64_t days() const;
    std::int64_t minutes() const;
    // Returns a text such as "2026-11-25 22:31".
    std::string text() const;
    // Returns a text for the user that says why the date isn't certain. Empty if the date is certain.
    std::string_view doubt() const;
    // Returns text(), followed by doubt() in parentheses if the date isn't certain.
    std::string textWithDoubt() const;
};

// The dates of several sets. The comment of a set is read only when of() or written() is called for the set, or when
// the date of another set depends on it. If a set can't be read, its date is the time of its list file.
class SetDates {
public:
    explicit SetDates(std::vector<SetFiles> sets);
    SetDates(const SetDates&) = delete;
    SetDates& operator=(const SetDates&) = delete;
    ~SetDates();

    const SetDate& of(std::size_t set);
    // Returns when the list file of the set was written, in nanoseconds since 1970. Returns 0 if this time can't be
    // read.
    std::int64_t written(std::size_t set);

private:
    struct Dated;

    Dated& read(std::size_t set);
    void decideByNeighbours(std::size_t set);

    std::vector<SetFiles> sets_;
    std::vector<std::unique_ptr<Dated>> dates_;
};

// Returns the indexes of the sets, the oldest first. A date has no seconds. If two sets have the same date, the one
// whose list file was written first counts as older.
std::vector<std::size_t> byDate(SetDates& dates, std::size_t sets);

}  // namespace archive
