// set_date.h - when a set was made (docs/archive.md, "The date of a set").
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

// The dates of several sets. The comment of a set is read when its date, or one that it decides, is asked for. A set
// that can't be read has the time of its file.
class SetDates {
public:
    explicit SetDates(std::vector<SetFiles> sets);
    SetDates(const SetDates&) = delete;
    SetDates& operator=(const SetDates&) = delete;
    ~SetDates();

    const SetDate& of(std::size_t set);
    // When the list file of the set was written, in nanoseconds since 1970. 0 if the host doesn't say.
    std::int64_t written(std::size_t set);

private:
    struct Dated;

    Dated& read(std::size_t set);
    void decideByNeighbours(std::size_t set);

    std::vector<SetFiles> sets_;
    std::vector<std::unique_ptr<Dated>> dates_;
};

// The indexes of the sets, the oldest first. A date has no seconds, so of two sets with one date the one whose list
// file was written first is the older one.
std::vector<std::size_t> byDate(SetDates& dates, std::size_t sets);

}  // namespace archive
